// serial-echo: answers every line that comes from a serial port with the same line.

// The third word of the launch line tells where the device is, as host:port.
var address = (instanceName || '127.0.0.1:7410').split(':');

var port = '/dev/ttyS1';

// Unlike other listeners this one is an object. Its `onMessage` is called with the object itself in
// front, and, like every function that the program calls, with the function as `this`.
var echo = {
  lines: 0,
  onMessage: function (self, from, line) {
    self.lines = self.lines + 1;
    log('line ' + self.lines + ' from ' + from + ': ' + line);
    // The second text tells the device how to read the third one; which texts it knows is its own.
    morvik.serial.write__(from, 'a', line);
    return true; // stay: a listener that returns anything else hears no more
  }
};

morvik.serial.addListener__(echo);

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  morvik.serial.open__(port, 115200); // 9600 when the speed is left out
  log('listening on ' + port);
}, {});
