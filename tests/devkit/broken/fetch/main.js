var address = (instanceName || '127.0.0.1:7410').split(':');

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  fetch('http://example.org/color').then(function (answer) {
    morvik.led.light(answer);
  });
});
