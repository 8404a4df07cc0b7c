// led-rainbow: the LED goes through the colours of the rainbow, and blinks when it is through.
//
// Each step is started by the answer to the one before, so the device is never asked for two things
// at once.

// The third word of the launch line tells where the device is, as host:port.
var address = (instanceName || '127.0.0.1:7410').split(':');

// A colour goes to the device as it is written here; names and '#rrggbb' are both common.
var rainbow = ['red', '#ff8000', 'yellow', 'green', 'blue', '#4b0082', 'violet'];

function fadeTo(index) {
  if (index === rainbow.length) {
    blink();
    return;
  }
  morvik.led.fade(rainbow[index], 200, function (code) { // within 200 milliseconds
    // 'OK' comes at once and only says that the fade has begun.
    if (code === 'TERMINATED') {
      log('the LED is ' + rainbow[index]);
      fadeTo(index + 1);
    }
  });
}

function blink() {
  morvik.led.pulse('white', 150, 3, function (code) { // three times, 150 milliseconds each
    if (code === 'TERMINATED') {
      log('that was the rainbow');
      exit();
    }
  });
}

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  morvik.led.light('black', function (code) {
    log('the LED is dark: ' + code);
    fadeTo(0);
  });
}, {});
