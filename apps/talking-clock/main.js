// talking-clock: tells the time at once, and then at every full minute, in the device's language.
//
// The words stand in a file of their own, phrases.js.

// The third word of the launch line tells where the device is, as host:port.
var address = (instanceName || '127.0.0.1:7410').split(':');

// Runs another script of this application's folder, here and now. What it declares at its top is
// there afterwards, as if it stood here.
include('phrases.js');

function tellTime(lang) {
  var now = new Date();
  var text = phrases[lang](now.getHours(), now.getMinutes());
  // The language may be left out: morvik.tts.start(text), morvik.tts.start(text, fn).
  morvik.tts.start(text, lang, function (code) {
    if (code === 'TERMINATED') {
      log('told in ' + lang + ': ' + text);
    }
  });
}

function tellAgainAtFullMinute(lang) {
  var toFullMinute = 60000 - Date.now() % 60000;
  setTimeout(toFullMinute, function () {
    tellTime(lang);
    tellAgainAtFullMinute(lang); // a new timer each time, so that the clock does not drift
  });
}

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  morvik.info(function (info) { // everything in it is text
    var lang = phrases[info.lang] ? info.lang : 'en';
    log('the device speaks ' + lang);
    tellTime(lang);
    tellAgainAtFullMinute(lang);
  });
}, {});
