morvik.led.fade('blue', function () {}); // red
morvik.led.fade('blue', '500'); // red
morvik.ears.move(1, 2, 3, 4, 5); // red
morvik.ears.move('5', 5); // red
morvik.tts.start(); // red
morvik.connect('127.0.0.1', '7410'); // red
setTimeout(function () {}, 1000); // red
