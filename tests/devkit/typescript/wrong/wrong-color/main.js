morvik.led.light(0xff0000); // red
morvik.led.fade(['red'], 500); // red
morvik.dock.light({ color: 'red' }); // red
morvik.led.light('red');
