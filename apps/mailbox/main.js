// mailbox: looks into the user's messages, blinks the LED for those that nobody has read, tells what
// they say, and marks them as read.

// The third word of the launch line tells where the device is, as host:port.
var address = (instanceName || '127.0.0.1:7410').split(':');

var UNREAD = 0; // what `status` is in a message's header: 0 unread, 1 read
var names = {}; // of the contacts, by their uuid

// No event tells that a message came: an application looks again from time to time. A device that fails
// to answer a query never calls the query's function, so the next look must not wait for that call: it is
// a timer that looks, and it goes on for as long as its function returns true. It asks nothing while an
// answer may still come. Otherwise queries would pile up at a device that is slow.
var PATIENCE = 5; // seconds that an answer may take
var waiting = 0; // seconds that are left for the answer to come

function lookFromTimeToTime() {
  setTimeout(1000, function () {
    if (waiting > 0) {
      waiting--;
    } else {
      look();
    }
    return true;
  });
}

// A contact has those of `firstname`, `lastname` and `alias` that are known.
function nameOf(contact) {
  return contact.alias || contact.firstname || contact.lastname || contact.uuid;
}

function senderOf(message) {
  var from = message.header.from;
  return from ? names[from.uuid] || nameOf(from) : 'nobody';
}

// Text, sound, XML or a mixture; this application only tells texts.
function textOf(message) {
  var content = message.content;
  return senderOf(message) + ': ' + (content.type === 'TEXT' ? content.content : content.type);
}

function look() {
  waiting = PATIENCE;
  morvik.message.list(function (messages) {
    // Texts are kept until they are told, not the messages: a list holds some 160 KB for as long as one
    // of its messages is kept, and an application that keeps 60 of them has no memory left.
    var unread = [];
    for (var i = 0; i < messages.length; i++) {
      if (messages[i].header.status === UNREAD) {
        unread.push({ id: messages[i].header.id, text: textOf(messages[i]) });
      }
    }
    if (unread.length > 0) {
      announce(unread);
    } else {
      waiting = 0;
    }
  });
}

function announce(unread) {
  log('unread messages: ' + unread.length);
  waiting = PATIENCE + unread.length; // the LED blinks for less than a second for each
  morvik.led.pulse('blue', 200, 3 * unread.length, function (code) {
    if (code !== 'OK') { // OK comes first, when the LED begins to blink
      tell(unread);
    }
  });
}

function tell(unread) {
  var ids = [];
  for (var i = 0; i < unread.length; i++) {
    log(unread[i].text);
    ids.push(unread[i].id);
  }
  waiting = PATIENCE;
  morvik.message.markAsRead(ids, function (marked) {
    log('marked as read: ' + marked.length);
    waiting = 0;
  });
}

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  lookFromTimeToTime();
  waiting = PATIENCE;
  morvik.contact.get(function (contacts) {
    for (var i = 0; i < contacts.length; i++) {
      names[contacts[i].uuid] = nameOf(contacts[i]);
    }
    log('contacts: ' + contacts.length);
    look();
  });
}, {});
