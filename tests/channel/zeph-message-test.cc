// The wire schema, field by field: numbers, labels, types, defaults and enum values as the device
// server and the scripts know them.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <gtest/gtest.h>
#include <zeph-message.pb.h>

#include <map>
#include <set>
#include <string>

namespace morvik::test {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::EnumDescriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::FileDescriptor;

struct FieldRow {
  const char* message;
  const char* name;
  int number;
  const char* label;
  const char* type;
  const char* byDefault;  // the empty text: no default of its own
};

struct EnumRow {
  const char* enumeration;
  const char* name;
  int value;
};

const char* const kMessages[] = {"ZephMsg",
                                 "Detection",
                                 "Detection.StartAudioDetection",
                                 "Detection.StartVideoDetection",
                                 "Detection.AudioEvent",
                                 "Detection.VideoEvent",
                                 "InteractiveMode",
                                 "Ears",
                                 "Dock",
                                 "Dock.Move",
                                 "Led",
                                 "Led.Pulse",
                                 "Led.Fade",
                                 "Led.Light",
                                 "Asr",
                                 "Tts",
                                 "Multimedia",
                                 "Multimedia.Play",
                                 "Multimedia.Pause",
                                 "Multimedia.Resume",
                                 "Multimedia.Next",
                                 "Multimedia.Previous",
                                 "Multimedia.Stop",
                                 "Multimedia.Record",
                                 "Multimedia.Getartist",
                                 "Multimedia.Getfolder",
                                 "Multimedia.Getplaylist",
                                 "Multimedia.Getgenre",
                                 "Multimedia.Getsong",
                                 "Webcam",
                                 "Choreography",
                                 "Serial",
                                 "Serial.Open",
                                 "Serial.Write",
                                 "Serial.Close",
                                 "SerialCallback",
                                 "SerialCallback.Readline",
                                 "Response",
                                 "WebcamDirectResponse",
                                 "AsrCallback",
                                 "AsrCallback.Recognition",
                                 "ButtonCallback",
                                 "EarsCallback",
                                 "RfidCallback",
                                 "MultimediaCallback",
                                 "AuthenticationToken",
                                 "AuthenticationResponse",
                                 "Event",
                                 "RunApplication",
                                 "RunApplicationResponse",
                                 "Ping",
                                 "System",
                                 "ConfigResponse",
                                 "KeyValue",
                                 "ConfigInstance",
                                 "ConfigApp",
                                 "Config",
                                 "Config.SipInfo",
                                 "MorvikInfoResponse",
                                 "MorvikInfoQuery",
                                 "ScheduleConf",
                                 "ScheduleConf.Schedule",
                                 "ScheduleConf.Schedule.SchedulePeriodic",
                                 "ScheduleConf.Schedule.ScheduleWeekly",
                                 "ScheduleConf.Schedule.ScheduleDate",
                                 "ScheduleConf.ScheduleApp",
                                 "ScheduleConf.ScheduleCallback",
                                 "ScheduleConf.ScheduleWakeup",
                                 "Contact",
                                 "Contact.Object",
                                 "ContactList",
                                 "GetContactList",
                                 "M2m",
                                 "M2m.Call",
                                 "M2m.Answer",
                                 "M2m.Hangup",
                                 "M2m.Account",
                                 "M2mCallback",
                                 "MorvikMessageHeader",
                                 "MorvikMessageContent",
                                 "MorvikMessageQuery",
                                 "MorvikMessage",
                                 "MorvikMessageResponse",
                                 "ScheduleEvent",
                                 "SocialQuery",
                                 "Social",
                                 "ServerQuery",
                                 "ServerQuery.IsConnectedQuery",
                                 "ServerQuery.CurrentConfigQuery",
                                 "ServerQuery.SendAllConfigQuery"};

constexpr FieldRow kFields[] = {
    {"ZephMsg", "id", 1, "required", "string", ""},
    {"ZephMsg", "correlationId", 2, "optional", "string", ""},
    {"ZephMsg", "interactiveId", 3, "optional", "string", ""},
    {"ZephMsg", "recipient", 4, "optional", "string", ""},
    {"ZephMsg", "callback", 5, "optional", "string", ""},
    {"ZephMsg", "ears", 101, "optional", "Ears", ""},
    {"ZephMsg", "led", 102, "optional", "Led", ""},
    {"ZephMsg", "asr", 103, "optional", "Asr", ""},
    {"ZephMsg", "tts", 104, "optional", "Tts", ""},
    {"ZephMsg", "multimedia", 105, "optional", "Multimedia", ""},
    {"ZephMsg", "webcam", 106, "optional", "Webcam", ""},
    {"ZephMsg", "choreography", 107, "optional", "Choreography", ""},
    {"ZephMsg", "m2m", 108, "optional", "M2m", ""},
    {"ZephMsg", "serial", 109, "optional", "Serial", ""},
    {"ZephMsg", "response", 200, "optional", "Response", ""},
    {"ZephMsg", "interactiveMode", 201, "optional", "InteractiveMode", ""},
    {"ZephMsg", "event", 202, "optional", "Event", ""},
    {"ZephMsg", "webcamDirectResponse", 203, "optional", "WebcamDirectResponse", ""},
    {"ZephMsg", "asrCallback", 300, "optional", "AsrCallback", ""},
    {"ZephMsg", "buttonCallback", 301, "optional", "ButtonCallback", ""},
    {"ZephMsg", "earsCallback", 302, "optional", "EarsCallback", ""},
    {"ZephMsg", "rfidCallback", 303, "optional", "RfidCallback", ""},
    {"ZephMsg", "multimediaCallback", 304, "optional", "MultimediaCallback", ""},
    {"ZephMsg", "m2mCallback", 305, "optional", "M2mCallback", ""},
    {"ZephMsg", "scheduleEvent", 306, "optional", "ScheduleEvent", ""},
    {"ZephMsg", "serialCallback", 307, "optional", "SerialCallback", ""},
    {"ZephMsg", "authenticationToken", 400, "optional", "AuthenticationToken", ""},
    {"ZephMsg", "authenticationResponse", 401, "optional", "AuthenticationResponse", ""},
    {"ZephMsg", "runApplication", 500, "optional", "RunApplication", ""},
    {"ZephMsg", "runApplicationResponse", 501, "optional", "RunApplicationResponse", ""},
    {"ZephMsg", "config", 600, "optional", "Config", ""},
    {"ZephMsg", "configApp", 601, "optional", "ConfigApp", ""},
    {"ZephMsg", "configResponse", 602, "optional", "ConfigResponse", ""},
    {"ZephMsg", "system", 610, "optional", "System", ""},
    {"ZephMsg", "scheduleConfig", 650, "optional", "ScheduleConf", ""},
    {"ZephMsg", "contactList", 660, "optional", "ContactList", ""},
    {"ZephMsg", "getcontactList", 661, "optional", "GetContactList", ""},
    {"ZephMsg", "pendingmessage", 662, "optional", "bool", ""},
    {"ZephMsg", "morvikMessageQuery", 700, "optional", "MorvikMessageQuery", ""},
    {"ZephMsg", "morvikMessageResponse", 701, "optional", "MorvikMessageResponse", ""},
    {"ZephMsg", "ping", 1000, "optional", "Ping", ""},
    {"ZephMsg", "morvikinfo_query", 1001, "optional", "MorvikInfoQuery", ""},
    {"ZephMsg", "morvikinfo_response", 1002, "optional", "MorvikInfoResponse", ""},
    {"ZephMsg", "socialQuery", 1100, "optional", "SocialQuery", ""},
    {"ZephMsg", "social", 1101, "optional", "Social", ""},
    {"ZephMsg", "detection", 1102, "optional", "Detection", ""},
    {"ZephMsg", "serverQuery", 2000, "optional", "ServerQuery", ""},
    {"ZephMsg", "dock", 2001, "optional", "Dock", ""},
    {"Detection", "audioEvent", 1, "optional", "Detection.AudioEvent", ""},
    {"Detection", "videoEvent", 2, "optional", "Detection.VideoEvent", ""},
    {"Detection", "startAudioDetection", 3, "optional", "Detection.StartAudioDetection", ""},
    {"Detection", "startVideoDetection", 4, "optional", "Detection.StartVideoDetection", ""},
    {"Detection", "stopAudioDetection", 5, "optional", "bool", ""},
    {"Detection", "stopVideoDetection", 6, "optional", "bool", ""},
    {"Detection.StartAudioDetection", "level", 1, "required", "sint32", ""},
    {"Detection.StartVideoDetection", "level", 1, "required", "sint32", ""},
    {"Detection.StartVideoDetection", "path", 2, "required", "string", ""},
    {"Detection.AudioEvent", "level", 1, "required", "sint32", ""},
    {"Detection.VideoEvent", "level", 1, "required", "sint32", ""},
    {"Detection.VideoEvent", "path", 2, "required", "string", ""},
    {"InteractiveMode", "action", 1, "optional", "InteractiveMode.Action", ""},
    {"InteractiveMode", "interactiveId", 2, "optional", "string", ""},
    {"InteractiveMode", "ttl", 3, "optional", "sint32", ""},
    {"InteractiveMode", "configId", 10, "optional", "string", ""},
    {"InteractiveMode", "access", 11, "repeated", "string", ""},
    {"Ears", "left", 1, "optional", "sint32", ""},
    {"Ears", "right", 2, "optional", "sint32", ""},
    {"Ears", "relative", 3, "optional", "bool", ""},
    {"Ears", "reset", 4, "optional", "bool", ""},
    {"Dock", "led", 1, "optional", "Led", ""},
    {"Dock", "move", 2, "optional", "Dock.Move", ""},
    {"Dock", "status", 3, "optional", "int32", ""},
    {"Dock", "change", 4, "optional", "int32", ""},
    {"Dock.Move", "cmd", 1, "required", "Dock.Type", ""},
    {"Dock.Move", "time", 2, "optional", "int32", "0"},
    {"Led", "pulse", 2, "optional", "Led.Pulse", ""},
    {"Led", "fade", 3, "optional", "Led.Fade", ""},
    {"Led", "light", 4, "optional", "Led.Light", ""},
    {"Led.Pulse", "color", 1, "required", "string", ""},
    {"Led.Pulse", "period", 2, "required", "int32", ""},
    {"Led.Pulse", "pulse", 3, "required", "int32", ""},
    {"Led.Fade", "color", 1, "required", "string", ""},
    {"Led.Fade", "period", 2, "required", "int32", ""},
    {"Led.Light", "color", 1, "optional", "string", ""},
    {"Asr", "dictionary", 1, "repeated", "string", ""},
    {"Asr", "file", 2, "optional", "string", ""},
    {"Asr", "lang", 3, "optional", "string", ""},
    {"Tts", "action", 1, "required", "Tts.Type", ""},
    {"Tts", "text", 2, "optional", "string", ""},
    {"Tts", "lang", 3, "optional", "string", ""},
    {"Multimedia", "play", 1, "optional", "Multimedia.Play", ""},
    {"Multimedia", "pause", 2, "optional", "Multimedia.Pause", ""},
    {"Multimedia", "resume", 3, "optional", "Multimedia.Resume", ""},
    {"Multimedia", "stop", 4, "optional", "Multimedia.Stop", ""},
    {"Multimedia", "record", 5, "optional", "Multimedia.Record", ""},
    {"Multimedia", "next", 6, "optional", "Multimedia.Next", ""},
    {"Multimedia", "previous", 7, "optional", "Multimedia.Previous", ""},
    {"Multimedia", "getartist", 100, "optional", "Multimedia.Getartist", ""},
    {"Multimedia", "getfolder", 102, "optional", "Multimedia.Getfolder", ""},
    {"Multimedia", "getplaylist", 103, "optional", "Multimedia.Getplaylist", ""},
    {"Multimedia", "getgenre", 104, "optional", "Multimedia.Getgenre", ""},
    {"Multimedia", "getsong", 105, "optional", "Multimedia.Getsong", ""},
    {"Multimedia", "artistlist", 150, "repeated", "string", ""},
    {"Multimedia", "folderlist", 151, "repeated", "string", ""},
    {"Multimedia", "playlistlist", 152, "repeated", "string", ""},
    {"Multimedia", "genrelist", 153, "repeated", "string", ""},
    {"Multimedia", "songlist", 154, "repeated", "string", ""},
    {"Multimedia.Play", "url", 1, "required", "string", ""},
    {"Multimedia.Record", "url", 1, "required", "string", ""},
    {"Webcam", "photo", 1, "required", "string", ""},
    {"Choreography", "start", 1, "optional", "string", ""},
    {"Choreography", "start_file", 2, "optional", "string", ""},
    {"Choreography", "stop", 3, "optional", "bool", ""},
    {"Serial", "open", 1, "optional", "Serial.Open", ""},
    {"Serial", "write", 2, "optional", "Serial.Write", ""},
    {"Serial", "close", 3, "optional", "Serial.Close", ""},
    {"Serial.Open", "port", 1, "required", "string", ""},
    {"Serial.Open", "baud", 2, "required", "int32", ""},
    {"Serial.Write", "port", 1, "required", "string", ""},
    {"Serial.Write", "data", 2, "required", "string", ""},
    {"Serial.Write", "base", 3, "optional", "string", ""},
    {"Serial.Close", "port", 1, "optional", "string", ""},
    {"SerialCallback", "readline", 1, "optional", "SerialCallback.Readline", ""},
    {"SerialCallback.Readline", "port", 1, "required", "string", ""},
    {"SerialCallback.Readline", "data", 2, "required", "string", ""},
    {"SerialCallback.Readline", "base", 3, "optional", "string", ""},
    {"Response", "code", 1, "optional", "VReturnCode", ""},
    {"Response", "description", 2, "optional", "string", ""},
    {"WebcamDirectResponse", "code", 1, "optional", "VReturnCode", ""},
    {"WebcamDirectResponse", "data", 2, "optional", "bytes", ""},
    {"AsrCallback", "recognition", 1, "repeated", "AsrCallback.Recognition", ""},
    {"AsrCallback.Recognition", "text", 1, "required", "string", ""},
    {"AsrCallback.Recognition", "confident", 2, "required", "int32", ""},
    {"AsrCallback.Recognition", "semantic", 3, "optional", "string", ""},
    {"ButtonCallback", "type", 1, "required", "ButtonCallback.Type", ""},
    {"EarsCallback", "type", 1, "required", "EarsCallback.Type", ""},
    {"EarsCallback", "step", 2, "optional", "int32", ""},
    {"EarsCallback", "length", 3, "optional", "int32", ""},
    {"RfidCallback", "id", 1, "required", "string", ""},
    {"RfidCallback", "content", 2, "optional", "bytes", ""},
    {"RfidCallback", "direction", 3, "optional", "RfidCallback.Dir", ""},
    {"RfidCallback", "app", 4, "optional", "int32", ""},
    {"RfidCallback", "type", 5, "optional", "RfidCallback.Type", ""},
    {"RfidCallback", "pict", 6, "optional", "int32", ""},
    {"RfidCallback", "color", 7, "optional", "RfidCallback.Col", ""},
    {"MultimediaCallback", "action", 1, "required", "MultimediaCallback.TypeAction", ""},
    {"AuthenticationToken", "token", 1, "required", "string", ""},
    {"AuthenticationResponse", "login", 1, "required", "string", ""},
    {"AuthenticationResponse", "authentication", 2, "required", "string", ""},
    {"Event", "code", 1, "required", "VReturnCode", ""},
    {"Event", "description", 2, "optional", "string", ""},
    {"RunApplication", "apiKey", 1, "required", "string", ""},
    {"RunApplicationResponse", "code", 1, "required", "VReturnCode", ""},
    {"RunApplicationResponse", "pid", 2, "optional", "int32", ""},
    {"System", "command", 1, "required", "CommandType", ""},
    {"System", "params", 2, "repeated", "KeyValue", ""},
    {"ConfigResponse", "config", 101, "optional", "ConfigInstance", ""},
    {"KeyValue", "key", 1, "required", "string", ""},
    {"KeyValue", "value", 2, "required", "string", ""},
    {"ConfigInstance", "interruptible", 10, "optional", "bool", ""},
    {"ConfigInstance", "awake", 11, "optional", "bool", ""},
    {"ConfigInstance", "rfid", 12, "optional", "string", ""},
    {"ConfigInstance", "name", 13, "required", "string", ""},
    {"ConfigInstance", "uuid", 14, "optional", "string", ""},
    {"ConfigInstance", "accessToken", 15, "optional", "string", ""},
    {"ConfigInstance", "params", 100, "repeated", "KeyValue", ""},
    {"ConfigApp", "apiKey", 1, "required", "string", ""},
    {"ConfigApp", "version", 2, "required", "string", ""},
    {"ConfigApp", "name", 3, "required", "string", ""},
    {"ConfigApp", "deployment", 4, "required", "string", ""},
    {"ConfigApp", "callback", 5, "optional", "string", ""},
    {"ConfigApp", "author", 6, "optional", "string", ""},
    {"ConfigApp", "access", 10, "repeated", "string", ""},
    {"ConfigApp", "parameters", 11, "repeated", "KeyValue", ""},
    {"ConfigApp", "configInstance", 100, "repeated", "ConfigInstance", ""},
    {"Config", "configapp", 1, "repeated", "ConfigApp", ""},
    {"Config", "lang", 10, "optional", "string", ""},
    {"Config", "playsounds", 11, "optional", "bool", ""},
    {"Config", "sipInfo", 20, "optional", "Config.SipInfo", ""},
    {"Config", "social", 21, "optional", "Social", ""},
    {"Config.SipInfo", "id", 1, "required", "string", ""},
    {"Config.SipInfo", "password", 2, "optional", "string", ""},
    {"Config.SipInfo", "domain", 3, "optional", "string", ""},
    {"Config.SipInfo", "stun", 4, "optional", "string", ""},
    {"MorvikInfoResponse", "infos", 1, "repeated", "KeyValue", ""},
    {"ScheduleConf", "scheduleApp", 1, "repeated", "ScheduleConf.ScheduleApp", ""},
    {"ScheduleConf", "scheduleCallback", 2, "repeated", "ScheduleConf.ScheduleCallback", ""},
    {"ScheduleConf", "scheduleWakeup", 3, "repeated", "ScheduleConf.ScheduleWakeup", ""},
    {"ScheduleConf", "reset", 10, "optional", "bool", "false"},
    {"ScheduleConf", "time", 11, "optional", "uint64", ""},
    {"ScheduleConf", "gmt", 12, "optional", "string", ""},
    {"ScheduleConf.Schedule", "schedulePeriodic", 1, "optional",
     "ScheduleConf.Schedule.SchedulePeriodic", ""},
    {"ScheduleConf.Schedule", "scheduleWeekly", 2, "optional",
     "ScheduleConf.Schedule.ScheduleWeekly", ""},
    {"ScheduleConf.Schedule", "scheduleDate", 3, "optional", "ScheduleConf.Schedule.ScheduleDate",
     ""},
    {"ScheduleConf.Schedule.SchedulePeriodic", "period", 1, "required", "int32", ""},
    {"ScheduleConf.Schedule.SchedulePeriodic", "delta", 2, "optional", "int32", "0"},
    {"ScheduleConf.Schedule.ScheduleWeekly", "dayWeek", 1, "required", "int32", ""},
    {"ScheduleConf.Schedule.ScheduleWeekly", "hour", 2, "required", "int32", ""},
    {"ScheduleConf.Schedule.ScheduleWeekly", "minute", 3, "required", "int32", ""},
    {"ScheduleConf.Schedule.ScheduleWeekly", "second", 4, "optional", "int32", "0"},
    {"ScheduleConf.Schedule.ScheduleDate", "year", 1, "optional", "int32", "-1"},
    {"ScheduleConf.Schedule.ScheduleDate", "month", 2, "optional", "int32", "-1"},
    {"ScheduleConf.Schedule.ScheduleDate", "day", 3, "optional", "int32", "-1"},
    {"ScheduleConf.Schedule.ScheduleDate", "hour", 4, "optional", "int32", "-1"},
    {"ScheduleConf.Schedule.ScheduleDate", "minute", 5, "required", "int32", ""},
    {"ScheduleConf.Schedule.ScheduleDate", "second", 6, "optional", "int32", "0"},
    {"ScheduleConf.ScheduleApp", "apiKey", 1, "required", "string", ""},
    {"ScheduleConf.ScheduleApp", "instance", 2, "optional", "string", ""},
    {"ScheduleConf.ScheduleApp", "schedule", 10, "required", "ScheduleConf.Schedule", ""},
    {"ScheduleConf.ScheduleCallback", "schedule", 1, "required", "ScheduleConf.Schedule", ""},
    {"ScheduleConf.ScheduleWakeup", "dayweek", 1, "required", "int32", ""},
    {"ScheduleConf.ScheduleWakeup", "wakeuphour", 2, "required", "int32", ""},
    {"ScheduleConf.ScheduleWakeup", "wakeupminute", 3, "required", "int32", ""},
    {"ScheduleConf.ScheduleWakeup", "sleephour", 4, "required", "int32", ""},
    {"ScheduleConf.ScheduleWakeup", "sleepminute", 5, "required", "int32", ""},
    {"Contact", "firstname", 1, "optional", "string", ""},
    {"Contact", "lastname", 2, "optional", "string", ""},
    {"Contact", "objects", 3, "repeated", "Contact.Object", ""},
    {"Contact", "alias", 4, "optional", "string", ""},
    {"Contact", "uuid", 5, "optional", "string", ""},
    {"Contact.Object", "idDB", 1, "required", "string", ""},
    {"Contact.Object", "name", 2, "optional", "string", ""},
    {"ContactList", "contacts", 1, "repeated", "Contact", ""},
    {"M2m", "call", 1, "optional", "M2m.Call", ""},
    {"M2m", "answer", 2, "optional", "M2m.Answer", ""},
    {"M2m", "hangup", 3, "optional", "M2m.Hangup", ""},
    {"M2m", "account", 4, "optional", "M2m.Account", ""},
    {"M2m.Call", "address", 1, "required", "string", ""},
    {"M2m.Answer", "accept", 1, "required", "bool", ""},
    {"M2m.Account", "sipId", 1, "required", "string", ""},
    {"M2m.Account", "sipDomain", 2, "required", "string", ""},
    {"M2m.Account", "sipPassword", 3, "required", "string", ""},
    {"M2m.Account", "stunServer", 4, "required", "string", ""},
    {"M2mCallback", "type", 1, "required", "M2mCallback.Type", ""},
    {"M2mCallback", "correspondant", 2, "required", "string", ""},
    {"MorvikMessageHeader", "id", 1, "optional", "string", ""},
    {"MorvikMessageHeader", "date", 2, "optional", "int32", ""},
    {"MorvikMessageHeader", "status", 3, "optional", "MorvikMessageHeader.Status", ""},
    {"MorvikMessageHeader", "from", 4, "optional", "Contact", ""},
    {"MorvikMessageHeader", "to", 5, "required", "Contact", ""},
    {"MorvikMessageContent", "type", 1, "required", "MorvikMessageContent.Type", ""},
    {"MorvikMessageContent", "header", 2, "optional", "string", ""},
    {"MorvikMessageContent", "content", 3, "required", "string", ""},
    {"MorvikMessageQuery", "action", 1, "required", "MorvikMessageQuery.TypeAction", ""},
    {"MorvikMessageQuery", "id", 2, "repeated", "string", ""},
    {"MorvikMessageQuery", "message", 3, "optional", "MorvikMessage", ""},
    {"MorvikMessage", "header", 1, "required", "MorvikMessageHeader", ""},
    {"MorvikMessage", "content", 2, "optional", "MorvikMessageContent", ""},
    {"MorvikMessageResponse", "morvikMessageList", 1, "repeated", "MorvikMessage", ""},
    {"ScheduleEvent", "uuid", 1, "required", "string", ""},
    {"ScheduleEvent", "params", 2, "optional", "string", ""},
    {"Social", "twitterConsumerKey", 10, "optional", "string", ""},
    {"Social", "twitterConsumerSecret", 11, "optional", "string", ""},
    {"Social", "twitterToken", 12, "optional", "string", ""},
    {"Social", "twitterTokenSecret", 13, "optional", "string", ""},
    {"Social", "facebookToken", 20, "optional", "string", ""},
    {"Social", "soundcloudToken", 30, "optional", "string", ""},
    {"ServerQuery", "isConnectedQuery", 1, "optional", "ServerQuery.IsConnectedQuery", ""},
    {"ServerQuery", "currentConfigQuery", 2, "optional", "ServerQuery.CurrentConfigQuery", ""},
    {"ServerQuery", "sendAllConfigQuery", 3, "optional", "ServerQuery.SendAllConfigQuery", ""},
    {"ServerQuery.IsConnectedQuery", "objectId", 1, "required", "string", ""},
    {"ServerQuery.CurrentConfigQuery", "interactiveId", 1, "required", "string", ""},
    {"ServerQuery.SendAllConfigQuery", "objectId", 1, "required", "string", ""},
};

constexpr EnumRow kEnums[] = {
    {"VReturnCode", "OK", 1},
    {"VReturnCode", "ERROR", 2},
    {"VReturnCode", "TIMEOUT", 3},
    {"VReturnCode", "TERMINATED", 4},
    {"VReturnCode", "CANCELLED", 5},
    {"VReturnCode", "BUSY", 6},
    {"VReturnCode", "BAD_INTERACTIVEID", 7},
    {"VReturnCode", "SCHEDULE_EVENT", 8},
    {"VReturnCode", "NOT_CONNECTED", 9},
    {"CommandType", "TELNET_ON", 1},
    {"CommandType", "TELNET_OFF", 2},
    {"CommandType", "LOG_ON", 10},
    {"CommandType", "LOG_OFF", 11},
    {"CommandType", "LOG_REMOTE_ON", 12},
    {"CommandType", "LOG_REMOTE_OFF", 13},
    {"CommandType", "SYSTEM_REBOOT", 20},
    {"InteractiveMode.Action", "START", 1},
    {"InteractiveMode.Action", "STOP", 2},
    {"Dock.Type", "LEFT", 1},
    {"Dock.Type", "RIGHT", 2},
    {"Dock.Type", "UP", 3},
    {"Dock.Type", "DOWN", 4},
    {"Dock.Type", "STOP", 5},
    {"Tts.Type", "START", 1},
    {"Tts.Type", "STOP", 2},
    {"ButtonCallback.Type", "SIMPLE", 1},
    {"ButtonCallback.Type", "DOUBLE", 2},
    {"ButtonCallback.Type", "TRIPLE", 3},
    {"ButtonCallback.Type", "MULTIPLE", 4},
    {"ButtonCallback.Type", "LONG_START", 5},
    {"ButtonCallback.Type", "LONG_STOP", 6},
    {"EarsCallback.Type", "START_LEFT", 1},
    {"EarsCallback.Type", "START_RIGHT", 2},
    {"EarsCallback.Type", "STOP_LEFT", 3},
    {"EarsCallback.Type", "STOP_RIGHT", 4},
    {"EarsCallback.Type", "BLOCKED_LEFT", 5},
    {"EarsCallback.Type", "BLOCKED_RIGHT", 6},
    {"RfidCallback.Dir", "IN", 1},
    {"RfidCallback.Dir", "OUT", 2},
    {"RfidCallback.Col", "NONE_COL", 0},
    {"RfidCallback.Col", "RED", 1},
    {"RfidCallback.Col", "BLUE", 2},
    {"RfidCallback.Col", "GREEN", 3},
    {"RfidCallback.Col", "YELLOW", 4},
    {"RfidCallback.Col", "PINK", 5},
    {"RfidCallback.Col", "BLACK", 6},
    {"RfidCallback.Col", "GREY", 7},
    {"RfidCallback.Col", "ORANGE", 8},
    {"RfidCallback.Col", "PURPLE", 9},
    {"RfidCallback.Col", "WHITE", 10},
    {"RfidCallback.Col", "DARK_RED", 11},
    {"RfidCallback.Col", "DARK_BLUE", 12},
    {"RfidCallback.Col", "DARK_GREEN", 13},
    {"RfidCallback.Col", "DARK_YELLOW", 14},
    {"RfidCallback.Col", "BROWN", 16},
    {"RfidCallback.Type", "NONE_TYPE", 0},
    {"RfidCallback.Type", "FLAT", 1},
    {"RfidCallback.Type", "MINIVORT", 2},
    {"RfidCallback.Type", "VORTAS", 3},
    {"RfidCallback.Type", "DRESS", 4},
    {"RfidCallback.Type", "VOLUMZ", 5},
    {"MultimediaCallback.TypeAction", "PLAY", 1},
    {"MultimediaCallback.TypeAction", "STOP", 2},
    {"MultimediaCallback.TypeAction", "PAUSE", 3},
    {"MultimediaCallback.TypeAction", "RESUME", 4},
    {"MultimediaCallback.TypeAction", "MUSIC_UPDATE", 5},
    {"M2mCallback.Type", "INCOMING", 0},
    {"M2mCallback.Type", "BEGINNING", 1},
    {"M2mCallback.Type", "TERMINATED", 2},
    {"MorvikMessageHeader.Status", "UNREAD", 0},
    {"MorvikMessageHeader.Status", "READ", 1},
    {"MorvikMessageContent.Type", "TEXT", 0},
    {"MorvikMessageContent.Type", "SOUND", 1},
    {"MorvikMessageContent.Type", "XML", 2},
    {"MorvikMessageContent.Type", "MIXED", 3},
    {"MorvikMessageQuery.TypeAction", "NEW", 1},
    {"MorvikMessageQuery.TypeAction", "LIST", 2},
    {"MorvikMessageQuery.TypeAction", "GET", 3},
    {"MorvikMessageQuery.TypeAction", "DELETE", 4},
    {"MorvikMessageQuery.TypeAction", "READ", 5},
};

const FileDescriptor& schema() {
  return *net::quelta::zeph::message::ZephMsg::descriptor()->file();
}

std::string shortName(const std::string& fullName) {
  return fullName.substr(schema().package().size() + 1);
}

std::string typeOf(const FieldDescriptor& field) {
  if (field.message_type() != nullptr) return shortName(field.message_type()->full_name());
  if (field.enum_type() != nullptr) return shortName(field.enum_type()->full_name());
  return field.type_name();
}

std::string labelOf(const FieldDescriptor& field) {
  if (field.is_required()) return "required";
  return field.is_repeated() ? "repeated" : "optional";
}

std::string defaultOf(const FieldDescriptor& field) {
  if (!field.has_default_value()) return "";
  if (field.cpp_type() == FieldDescriptor::CPPTYPE_BOOL) {
    return field.default_value_bool() ? "true" : "false";
  }
  return std::to_string(field.default_value_int32());
}

void collect(const Descriptor& message, std::set<const Descriptor*>& found) {
  found.insert(&message);
  for (int i = 0; i < message.nested_type_count(); ++i) collect(*message.nested_type(i), found);
}

std::set<const Descriptor*> allMessages() {
  std::set<const Descriptor*> found;
  for (int i = 0; i < schema().message_type_count(); ++i) collect(*schema().message_type(i), found);
  return found;
}

TEST(ZephMessage, packageAndFileOptions) {
  EXPECT_EQ(schema().package(), "net.quelta.zeph.message");
  EXPECT_EQ(schema().syntax(), FileDescriptor::SYNTAX_PROTO2);
  EXPECT_EQ(schema().options().java_package(), "net.quelta.zeph.message");
  EXPECT_EQ(schema().options().java_outer_classname(), "MessageManager");
  EXPECT_NE(schema().options().optimize_for(), google::protobuf::FileOptions::LITE_RUNTIME);
}

TEST(ZephMessage, everyMessageOfTheTableAndNoOther) {
  std::set<std::string> expected(std::begin(kMessages), std::end(kMessages));
  std::set<std::string> actual;
  for (const Descriptor* message : allMessages()) actual.insert(shortName(message->full_name()));
  EXPECT_EQ(actual, expected);
}

TEST(ZephMessage, everyFieldOfTheTable) {
  for (const FieldRow& row : kFields) {
    SCOPED_TRACE(std::string(row.message) + "." + row.name);
    const Descriptor* message =
        schema().pool()->FindMessageTypeByName(schema().package() + "." + row.message);
    ASSERT_NE(message, nullptr);
    const FieldDescriptor* field = message->FindFieldByName(row.name);
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->number(), row.number);
    EXPECT_EQ(labelOf(*field), row.label);
    EXPECT_EQ(typeOf(*field), row.type);
    EXPECT_EQ(defaultOf(*field), row.byDefault);
  }
}

TEST(ZephMessage, noFieldBeyondTheTable) {
  std::size_t fields = 0;
  for (const Descriptor* message : allMessages()) {
    fields += static_cast<std::size_t>(message->field_count());
  }
  EXPECT_EQ(fields, std::size(kFields));
}

TEST(ZephMessage, everyEnumValueOfTheTableAndNoOther) {
  std::map<std::string, std::size_t> rowsOf;
  for (const EnumRow& row : kEnums) {
    SCOPED_TRACE(std::string(row.enumeration) + "." + row.name);
    const EnumDescriptor* enumeration =
        schema().pool()->FindEnumTypeByName(schema().package() + "." + row.enumeration);
    ASSERT_NE(enumeration, nullptr);
    const auto* value = enumeration->FindValueByName(row.name);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->number(), row.value);
    ++rowsOf[enumeration->full_name()];
  }
  std::size_t enumerations = static_cast<std::size_t>(schema().enum_type_count());
  for (const Descriptor* message : allMessages()) {
    enumerations += static_cast<std::size_t>(message->enum_type_count());
  }
  EXPECT_EQ(rowsOf.size(), enumerations);
  for (const auto& [name, rows] : rowsOf) {
    EXPECT_EQ(schema().pool()->FindEnumTypeByName(name)->value_count(), static_cast<int>(rows))
        << name;
  }
}

TEST(ZephMessage, aMessageWithoutIdIsNotInitialised) {
  net::quelta::zeph::message::ZephMsg message;
  message.mutable_ping();
  EXPECT_FALSE(message.IsInitialized());
  EXPECT_FALSE(message.ParseFromString(message.SerializePartialAsString()));
}

TEST(ZephMessage, unknownFieldsSurvive) {
  net::quelta::zeph::message::ZephMsg message;
  ASSERT_TRUE(message.ParseFromString(std::string("\x0a\x01x\xc0\xbb\x01\x07", 7)));
  EXPECT_EQ(message.unknown_fields().field_count(), 1);
  EXPECT_EQ(message.unknown_fields().field(0).number(), 3000);
}

TEST(ZephMessage, aValueOutsideItsEnumerationIsAnUnknownField) {
  net::quelta::zeph::message::RfidCallback tag;
  tag.set_id("t");
  std::string wire = tag.SerializeAsString();
  wire += std::string("\x38\x0f", 2);  // color = 15, the gap in the colours
  ASSERT_TRUE(tag.ParseFromString(wire));
  EXPECT_FALSE(tag.has_color());
  EXPECT_EQ(tag.unknown_fields().field_count(), 1);
}

}  // namespace
}  // namespace morvik::test
