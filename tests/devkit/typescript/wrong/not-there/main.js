console.log('hello'); // red
setInterval(function () {}, 1000); // red
fetch('http://127.0.0.1/'); // red
new WebSocket('ws://127.0.0.1/'); // red
morvik.sleep(1000); // red
