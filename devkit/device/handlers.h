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
void answerContactQuery(const Exchange& exchange);
void answerMessageQuery(const Exchange& exchange);
void answerSocialQuery(const Exchange& exchange);

// What the device has of every LED: its command, its state, and its work.
void answerLedCommand(const Exchange& exchange, const zeph::Led& led, Led& state, Work work);

// What the world does to the device. See stimuli.cc for their words.
void pressButton(Stimulation& stimulation);
void showTag(Stimulation& stimulation);
void tellOfEars(Stimulation& stimulation);
void turnEar(Stimulation& stimulation);
void bringMessage(Stimulation& stimulation);
void keepContact(Stimulation& stimulation);
void setCredentials(Stimulation& stimulation);

}  // namespace morvik::devkit
