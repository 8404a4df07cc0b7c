// button-game: press the button as soon as the LED turns green. The best time is kept in a file.
//
// A short press plays, a double press tells the best time, a long press ends the game.

// The third word of the launch line tells where the device is, as host:port.
var address = (instanceName || '127.0.0.1:7410').split(':');

var greenSince = 0; // milliseconds; 0 while the LED is red
var best = readBest();

// file.read gives an object at once; the file is opened when its `text` is asked for, and that throws
// when there is none: nobody has played yet.
function readBest() {
  try {
    return Number(file.read('best.txt').text);
  } catch (problem) {
    return Infinity;
  }
}

function newRound() {
  greenSince = 0;
  morvik.led.light('red');
  log('wait for green');
  setTimeout(1500 + morvik.random() % 1500, function () {
    morvik.led.light('green');
    greenSince = Date.now();
    log('press!');
  });
}

function pressed() {
  if (greenSince === 0) {
    log('too early'); // the round goes on
    return;
  }
  var time = Date.now() - greenSince;
  log('that took ' + time + ' ms');
  if (time < best) {
    best = time;
    file.write('best.txt', String(best)); // in the application's own folder
    log('a new best time');
  }
  newRound();
}

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  morvik.button.addListener(function (press) {
    if (press === 'SIMPLE') {
      pressed();
    } else if (press === 'DOUBLE') {
      log(best === Infinity ? 'no best time yet' : 'the best time is ' + best + ' ms');
    } else if (press === 'LONG_START') {
      log('bye');
      exit();
    }
    return true; // stay: a listener that returns anything else hears no more
  });
  newRound();
}, {});
