// voice-menu: listens for a word of its menu and does what it means.

// The third word of the launch line tells where the device is, as host:port.
var address = (instanceName || '127.0.0.1:7410').split(':');

// What the device shall listen for. Its recogniser defines how this is written.
var grammar = 'light on|light off|goodbye';

var choices = {
  on: function () { morvik.led.light('white'); listen(); },
  off: function () { morvik.led.light('black'); listen(); },
  bye: function () { log('goodbye'); exit(); }
};

// A result has the words in `text`, a number from 0 to 100 in `confident`, and their meaning: the
// device describes it in XML, and every element becomes a property. <menu><choice>on</choice></menu>
// is result.menu.choice here.
function understood(result) {
  var choice = result.menu && result.menu.choice;
  log('heard "' + result.text + '" (' + result.confident + '): ' + (choice || 'no choice'));
  if (result.confident < 30) {
    log('please say that again');
    listen();
  } else if (choices.hasOwnProperty(choice)) {
    choices[choice]();
  } else {
    log('that is not in the menu');
    listen();
  }
}

// The function hears one result. For the next word the device has to listen again.
function listen() {
  log('listening');
  morvik.asr.string(grammar, 'en', understood);
}

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  // Launched by a spoken phrase, the application finds it in launchType.
  if (launchType.name === 'ASR') {
    log('launched by "' + launchType.text + '"');
  }
  listen();
}, {});
