// dock-tour: the device drives around on its dock and shows where it turns with the dock's LED.
//
// A movement tells nobody that it is over, so a timer counts the time that it was given.

// The third word of the launch line tells where the device is, as host:port.
var address = (instanceName || '127.0.0.1:7410').split(':');

// A direction, how long in milliseconds, and the colour of the dock's LED on the way.
var tour = [
  { direction: 'UP', time: 300, color: 'green' },
  { direction: 'LEFT', time: 200, color: 'yellow' },
  { direction: 'DOWN', time: 300, color: 'blue' },
  { direction: 'RIGHT', time: 200, color: 'yellow' }
];

function drive(leg) {
  if (leg === tour.length) {
    park();
    return;
  }
  var now = tour[leg];
  log('going ' + now.direction);
  morvik.dock.light(now.color);
  morvik.dock.move(now.direction, now.time);
  setTimeout(now.time, function () { // once: this function does not return true
    drive(leg + 1);
  });
}

function park() {
  morvik.dock.move('STOP', 0);
  morvik.dock.fade('black', 500, function (code) {
    if (code === 'TERMINATED') {
      log('parked');
    }
  });
}

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  morvik.dock.pulse('white', 100, 2, function (code) { // a sign that it is about to move
    if (code === 'TERMINATED') {
      drive(0);
    }
  });
}, {});
