// One function for each payload that the device answers, and one for each stimulus. To teach the
// device a new one: a file like led.cc or ears.cc, a line here, and a line in the table of handlers
// in device.cc or in the table of stimuli in stimuli.cc.
#pragma once

#include "device/exchange.h"
#include "device/stimulation.h"

namespace morvik::devkit {

// Commands of applications, by payload.
void answerInteractiveMode(const Exchange& exchange);
void answerPing(const Exchange& exchange);
void answerInfoQuery(const Exchange& exchange);
void answerLed(const Exchange& exchange);
void answerEars(const Exchange& exchange);
void answerDock(const Exchange& exchange);
void answerTts(const Exchange& exchange);
void answerAsr(const Exchange& exchange);
void answerMultimedia(const Exchange& exchange);
void answerWebcam(const Exchange& exchange);
void answerM2m(const Exchange& exchange);
void answerSerial(const Exchange& exchange);
void answerSerialListener(const Exchange& exchange);
void answerContactQuery(const Exchange& exchange);
void answerMessageQuery(const Exchange& exchange);
void answerSocialQuery(const Exchange& exchange);

// What the device has of every LED: its command, its state, and its work.
void answerLedCommand(const Exchange& exchange, const zeph::Led& led, Led& state, Work work);

// Completes the event of a command that leaves a file behind: the problem there was, if any.
void tellOfFile(Device& device, zeph::ZephMsg& event, const char* path,
                const std::optional<std::string>& problem);

// Ends the call of an application, if it has one, for both ends.
void endCall(Device& device, AppNumber number);

// What the world does to the device. See stimuli.cc for their words.
void pressButton(Stimulation& stimulation);
void showTag(Stimulation& stimulation);
void tellOfEars(Stimulation& stimulation);
void turnEar(Stimulation& stimulation);
void tellOfDock(Stimulation& stimulation);
void hearWords(Stimulation& stimulation);
void hearNoise(Stimulation& stimulation);
void tellOfPlayer(Stimulation& stimulation);
void changeLibrary(Stimulation& stimulation);
void callFromOutside(Stimulation& stimulation);
void readFromPort(Stimulation& stimulation);
void stopInteractiveMode(Stimulation& stimulation);
void refuseCommands(Stimulation& stimulation);
void acceptCommands(Stimulation& stimulation);
void delayAnswers(Stimulation& stimulation);
void finishWork(Stimulation& stimulation);
void sendInPieces(Stimulation& stimulation);
void dropConnection(Stimulation& stimulation);
void bringMessage(Stimulation& stimulation);
void keepContact(Stimulation& stimulation);
void setCredentials(Stimulation& stimulation);

}  // namespace morvik::devkit
