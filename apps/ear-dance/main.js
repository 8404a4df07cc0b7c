// ear-dance: both ears go to their places, dance a few figures, and come to rest.
//
// A listener hears all the while what the ears do, whoever moves them: a hand does, too.

// The third word of the launch line tells where the device is, as host:port.
var address = (instanceName || '127.0.0.1:7410').split(':');

// Positions of the left and the right ear. null leaves an ear where it is.
var figures = [[4, 4], [2, null], [null, 2], [5, 3], [3, 5], [2, 2]];

// 'OK' says that a movement has begun, 'TERMINATED' that it is over.

function dance(step) {
  if (step === figures.length) {
    wiggle();
    return;
  }
  morvik.ears.move(figures[step][0], figures[step][1], function (code) {
    if (code === 'TERMINATED') {
      log('figure ' + (step + 1) + ' of ' + figures.length);
      dance(step + 1);
    }
  });
}

// Relative movements count from where the ears are.
function wiggle() {
  morvik.ears.moveRelative(2, -2, function (code) {
    if (code === 'TERMINATED') {
      log('the dance is over');
    }
  });
}

// Hears things like 'START_LEFT' and 'BLOCKED_RIGHT', at any time.
morvik.ears.addListener(function (what, step, length) {
  if (what === 'BLOCKED_LEFT' || what === 'BLOCKED_RIGHT') {
    log('somebody holds an ear: ' + what); // and what the ears were doing is 'CANCELLED'
  }
  return true; // stay: a listener that returns anything else hears no more
});

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  var begun = false;
  // A reset finds out where the ears are. Its function hears two positions beside the code.
  morvik.ears.reset(function (code, left, right) {
    log('ears: ' + code + ', left at ' + left + ', right at ' + right);
    if (code === 'TERMINATED' && !begun) {
      begun = true;
      dance(0);
    }
  });
}, {});
