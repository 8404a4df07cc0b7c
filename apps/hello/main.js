// hello: finds the device, asks who it is, and plays with its LED.
//
// This file runs once, from top to bottom. What is to happen later is put into functions: the answer
// to a command, a timer. They are called one at a time, after this file has run to its end.

// An application is started by one line: its name, a launch type, and a text of its own choice in
// `instanceName`. Here that text is where the device is, as host:port.
var address = instanceName || '127.0.0.1:7410';
var colon = address.lastIndexOf(':');
var host = address.substring(0, colon);
var port = Number(address.substring(colon + 1));

// The last argument of a command is a function that hears how it went: 'OK' at once, and
// 'TERMINATED' when something that takes time is over. It may be left out.

// Four steps, each started by the answer to the one before.

function ping() {
  morvik.ping(function (code) {
    log('ping: ' + code);
    askWhoItIs();
  });
}

function askWhoItIs() {
  morvik.info(function (info) {
    for (var key in info) {
      log('the device says: ' + key + ' is ' + info[key]);
    }
    lightTheLed();
  });
}

function lightTheLed() {
  morvik.led.light('red', function (code) {
    log('LED on, red: ' + code);
    fadeTheLed();
  });
}

function fadeTheLed() {
  morvik.led.fade('blue', 1000, function (code) {
    log('LED fading to blue: ' + code); // heard twice: OK, and TERMINATED a second later
    if (code === 'TERMINATED') {
      changeTheLedForEver();
    }
  });
}

function changeTheLedForEver() {
  var colors = ['green', 'yellow', 'purple', 'white'];
  var turn = 0;

  setTimeout(2000, function () {
    var color = colors[turn % colors.length];
    turn = turn + 1;
    morvik.led.fade(color, 500, function (code) {
      if (code === 'TERMINATED') {
        log('the LED is ' + color + ' now');
      }
    });
    return true; // again in two seconds; anything else would end the timer
  });
}

try {
  morvik.connect(host, port);

  // Commands work in interactive mode only, which the device grants. The object is handed to the
  // function, for whatever it may need.
  morvik.start(function (object) {
    log('hello, I am ' + object.name + ' and the device listens to me');
    ping();
  }, { name: appName });
} catch (problem) {
  log('no device at ' + address + ': ' + problem);
  setTimeout(0, exit);
}
