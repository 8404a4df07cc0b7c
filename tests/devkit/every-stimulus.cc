// The rows.
#include "every-stimulus.h"

namespace morvik::test {
namespace {

// Goes on until it is ended, however busy the machine is.
constexpr const char* kLongSpeech =
    "tts { action: START text: 'Once upon a time there was a device with two ears, and everything "
    "that it heard with them took it a while to say again, word for word, until somebody came.' }";

const std::vector<StimulusRow> kRows = {
    {"", "button DOUBLE", R"({"stimulus": "button", "arguments": {"type": "DOUBLE"}})"},
    {"", "app 2 button simple",
     R"({"stimulus": "button", "app": 2, "arguments": {"type": "simple"}})"},
    {"", "rfid 04a1", R"({"stimulus": "rfid", "arguments": {"id": "04a1"}})"},
    {"", "rfid 04a1 OUT app=-3 type=FLAT pict=7 color=RED content='a b'",
     R"({"stimulus": "rfid", "arguments": {"id": "04a1", "direction": "OUT", "app": -3,
           "type": "FLAT", "pict": "7", "color": "RED", "content": "a b"}})"},
    {"", "rfid 04a1 IN hex=6100",
     R"({"stimulus": "rfid", "arguments": {"id": "04a1", "direction": "IN", "hex": "6100"}})"},
    {"ears { left: 9 }", "ear LEFT 3",
     R"({"stimulus": "ear", "arguments": {"side": "LEFT", "step": 3}})"},
    {"ears { left: 9 }", "ears BLOCKED_LEFT 4 5",
     R"({"stimulus": "ears", "arguments": {"type": "BLOCKED_LEFT", "step": 4, "length": 5}})"},
    {"", "message anna 'Are you there?' type=MIXED header=h",
     R"({"stimulus": "message", "arguments": {"uuid": "anna", "text": "Are you there?",
           "type": "MIXED", "header": "h"}})"},
    {"", "contact anna firstname=Anna alias=a object=1:Lamp object=2",
     R"({"stimulus": "contact", "arguments": {"uuid": "anna", "firstname": "Anna", "alias": "a",
           "object": ["1:Lamp", "2"]}})"},
    {"", "credentials", R"({"stimulus": "credentials"})"},
    {"", "credentials facebookToken=abc twitterToken='d e=f' soundcloudToken=",
     R"({"stimulus": "credentials", "arguments": {"values": {"facebookToken": "abc",
           "twitterToken": "d e=f", "soundcloudToken": ""}}})"},
    {"", "credentials withhold",
     R"({"stimulus": "credentials", "arguments": {"mode": "withhold"}})"},
    {"", "dock 7 -1", R"({"stimulus": "dock", "arguments": {"status": 7, "change": -1}})"},
    {"asr { dictionary: 'a' }", "recognition 'oh yes' 87 <a>1</a>",
     R"({"stimulus": "recognition", "arguments": {"text": "oh yes", "confident": 87,
           "semantic": "<a>1</a>"}})"},
    {"asr { dictionary: 'a' }", "noise", R"({"stimulus": "noise", "arguments": null})"},
    {"", "player PAUSE", R"({"stimulus": "player", "arguments": {"action": "PAUSE"}})"},
    {"", "library SONG a 'b c'",
     R"({"stimulus": "library", "arguments": {"list": "SONG", "names": ["a", "b c"]}})"},
    {"", "library GENRE",
     R"({"stimulus": "library", "arguments": {"list": "GENRE", "names": []}})"},
    {"", "call INCOMING aunt",
     R"({"stimulus": "call", "arguments": {"type": "INCOMING", "who": "aunt"}})"},
    {"", "serial p 'a b' h",
     R"({"stimulus": "serial", "arguments": {"port": "p", "text": "a b", "base": "h"}})"},
    {"", "picture", R"({"stimulus": "picture", "arguments": {}})"},
    {"", "recording", R"({"stimulus": "recording"})"},
    {"", "stop", R"({"stimulus": "stop"})"},
    {"", "refuse BUSY", R"({"stimulus": "refuse", "arguments": {"code": "BUSY"}})"},
    {"", "app 2 refuse ERROR ears ALWAYS",
     R"({"stimulus": "refuse", "app": 2, "arguments": {"code": "ERROR", "command": "ears",
           "count": "always"}})"},
    {"", "refuse ERROR 3", R"({"stimulus": "refuse", "arguments": {"code": "ERROR", "count": 3}})"},
    {"", "accept", R"({"stimulus": "accept", "app": null})"},
    {"", "delay 700 ping",
     R"({"stimulus": "delay", "arguments": {"length": 700, "command": "ping"}})"},
    {kLongSpeech, "finish tts", R"({"stimulus": "finish", "arguments": {"work": "tts"}})"},
    {kLongSpeech, "finish tts ERROR 'no voice'",
     R"({"stimulus": "finish", "arguments": {"work": "tts", "code": "ERROR",
           "text": "no voice"}})"},
    {"", "pieces 3", R"({"stimulus": "pieces", "arguments": {"size": 3}})"},
    {"", "pieces 3 50", R"({"stimulus": "pieces", "arguments": {"size": 3, "pause": 50}})"},
    {"", "app 1 drop", R"({"stimulus": "drop", "app": 1})"},
    {"", "apps", R"({"stimulus": "apps"})"},
    {"", "state", R"({"stimulus": "state"})"},
    {"", "help button", R"({"stimulus": "help", "arguments": {"word": "button"}})"},
};

}  // namespace

const std::vector<StimulusRow>& everyStimulus() { return kRows; }

}  // namespace morvik::test
