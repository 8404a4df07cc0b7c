morvik.start(function () {
  morvik.led.light('red');
});
