// radio: plays stations, looks into the music library, and is worked with the button: a short press
// pauses and goes on, a double press is the next station, a long press turns it off.

// The third word of the launch line tells where the device is, as host:port.
var address = (instanceName || '127.0.0.1:7410').split(':');

// Web addresses and full paths go to the device as they are. './jingle.mp3' would be a file in this
// application's own folder on the device.
var stations = ['http://radio.example.org/jazz', 'http://radio.example.org/news'];
var station = 0;
var lastAction = 'STOP'; // what the player did last

function playStation() {
  morvik.multimedia.play(stations[station], function (code) {
    log(stations[station] + ': ' + code);
  });
}

// A question about the library gives the first entry of a list, and nothing when there is none.
function lookIntoLibrary() {
  morvik.multimedia.playlist(function (name) { log('first playlist: ' + name); });
  morvik.multimedia.artist(function (name) { log('first artist: ' + name); });
  morvik.multimedia.genre(function (name) { log('first genre: ' + name); });
  morvik.multimedia.folder(function (name) { log('first folder: ' + name); });
  morvik.multimedia.song(function (name) { log('first song: ' + name); });
}

// What the player does: 'PLAY', 'PAUSE', 'RESUME', 'STOP', and 'MUSIC_UPDATE' when the library has
// changed. Not only this application may be at it.
morvik.multimedia.addListener(function (action) {
  log('player: ' + action);
  if (action !== 'MUSIC_UPDATE') {
    lastAction = action;
  }
  return true; // stay: a listener that returns anything else hears no more
});

function pauseOrGoOn() {
  if (lastAction === 'STOP') {
    playStation();
  } else if (lastAction === 'PAUSE') {
    morvik.multimedia.resume();
  } else {
    morvik.multimedia.pause();
  }
}

morvik.button.addListener(function (press) {
  if (press === 'SIMPLE') {
    pauseOrGoOn();
  } else if (press === 'DOUBLE') {
    station = (station + 1) % stations.length;
    playStation();
  } else if (press === 'LONG_START') {
    morvik.multimedia.stop(function (code) { log('off: ' + code); });
  }
  return true;
});

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  lookIntoLibrary();
  playStation();
}, {});
