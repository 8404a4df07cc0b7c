var address = (instanceName || '127.0.0.1:7410').split(':');

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  morvik.led.light('red');
});
