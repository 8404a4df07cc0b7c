// The application on MorvikVM. In front of this stand PORT, TASK, COUNT and OTHERS as the benchmark
// wants them, and application.js.
log('started');
morvik.connect('127.0.0.1', PORT);
morvik.start(function() {
  log('granted');
  runTask({
    ping: ping,
    light: morvik.led.light,
    onButton: morvik.button.addListener,
    onTag: morvik.rfid.addListener,
    after: function(f) { setTimeout(1000000000, f); },
  }, TASK, COUNT, OTHERS);
}, {});
