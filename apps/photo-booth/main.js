// photo-booth: a short press of the button takes a photo, a double press records a message. What came
// of it is handed to the player.

// The third word of the launch line tells where the device is, as host:port.
var address = (instanceName || '127.0.0.1:7410').split(':');

// A photo or a recording is over when `data` is there. `data` stands for the file on the device: a
// script cannot look into it, but pass it on to what takes a file, as the player does. It is passed on at
// once and not kept: a result holds some 160 KB for as long as it or its `data` is kept.
function hearOf(what) {
  return function (result) {
    log(what + ': ' + result.type + (result.description ? ', ' + result.description : ''));
    if (result.type === 'TERMINATED' && result.data) {
      handToPlayer(what, result.data);
    }
  };
}

function handToPlayer(what, data) {
  morvik.multimedia.play(data, function (code) {
    log('playing the ' + what + ': ' + code);
  });
}

morvik.button.addListener(function (press) {
  if (press === 'SIMPLE') {
    morvik.webcam.photo('booth', hearOf('photo')); // the text is the device's to read: a name here
  } else if (press === 'DOUBLE') {
    morvik.multimedia.record(hearOf('recording'));
  } else {
    log('press once for a photo, twice for a message');
  }
  return true; // stay: a listener that returns anything else hears no more
});

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  log('the booth is open');
}, {});
