// rfid-greeter: welcomes whoever puts a tag on the reader, and says goodbye when it is taken away.
//
// A tag can also launch the application. Then the launch line tells about that tag.

// The third word of the launch line tells where the device is, as host:port.
var address = (instanceName || '127.0.0.1:7410').split(':');

// The speaker says one text at a time, so what comes while it speaks waits in a queue.
var unsaid = [];
var speaking = false;

function say(text) {
  unsaid.push(text);
  if (!speaking) {
    sayNext();
  }
}

function sayNext() {
  speaking = unsaid.length > 0;
  if (!speaking) {
    return;
  }
  var text = unsaid.shift();
  morvik.tts.start(text, 'en', function (code) {
    if (code === 'TERMINATED') {
      log('said: ' + text);
    }
    if (code !== 'OK') { // over, or refused: either way the next one may go
      sayNext();
    }
  });
}

// What the tag says about itself; only `id` is always there.
function nameOf(tag) {
  return tag.content || ('tag ' + tag.id);
}

morvik.rfid.addListener(function (tag) {
  // What stays is text, in `unsaid`. Each tag object holds some 160 KB for as long as it is kept, so who
  // wants to keep one keeps a copy of it: Object.assign({}, tag).
  log(tag.direction + ' ' + tag.id + ' ' + tag.type + ' ' + tag.color);
  say((tag.direction === 'IN' ? 'Hello ' : 'Goodbye ') + nameOf(tag));
  return true; // stay: a listener that returns anything else hears no more
});

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  // On the launch line the tag's content is called `data`, and everything is text.
  if (launchType.name === 'RFID') {
    log('launched by the tag ' + launchType.id);
    say('Welcome ' + launchType.data);
  } else {
    log('waiting for tags');
  }
}, {});
