morvik.led.light('red');
morvik.ears.reset(); // red
http.get('http://127.0.0.1/'); // red
