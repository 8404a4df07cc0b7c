var address = (instanceName || '127.0.0.1:7410').split(':');

include('a.js');
morvik.connect(address[0], Number(address[1]));
morvik.start(function () {
  log(hello);
  morvik.led.light('red');
});
