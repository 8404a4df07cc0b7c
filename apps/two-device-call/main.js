// two-device-call: one device calls another. Launch it twice:
//   two-device-call demo bob@127.0.0.1:7410         is bob, who waits for a call and answers it
//   two-device-call demo anna-bob@127.0.0.1:7410    is anna, who calls bob
//
// So the third word of the launch line, instanceName, decides. What follows the @ is where the device
// is, as host:port.
var at = instanceName.lastIndexOf('@'); // -1 when there is no name
var names = instanceName.substring(0, at).split('-');
var address = (instanceName.substring(at + 1) || '127.0.0.1:7410').split(':');

var me = names[0] || 'nobody';
var whom = names[1]; // undefined for who waits

// Commands for a call take no function: how it goes is heard here alone. Every step returns true, or
// the next one would not be heard. Nothing keeps `call` itself, which would hold some 160 KB each time.
morvik.m2m.addListener(function (call) {
  if (call.type === 'INCOMING') {
    log(call.correspondant + ' calls');
    morvik.m2m.answer(true); // false would decline
  } else if (call.type === 'BEGINNING') {
    log('talking with ' + call.correspondant);
    if (whom) {
      hangUpSoon();
    }
  } else if (call.type === 'TERMINATED') {
    log('the call with ' + call.correspondant + ' is over');
  }
  return true;
});

function hangUpSoon() {
  setTimeout(300, function () {
    log('hanging up');
    morvik.m2m.hangup();
  });
}

morvik.connect(address[0], Number(address[1]));

morvik.start(function () {
  // The account for calls: an id, which others call, its domain, its password, and a server that helps
  // through a router.
  morvik.m2m.account(me, 'sip.example.org', 'password', 'stun.example.org');
  if (whom) {
    log(me + ' calls ' + whom);
    morvik.m2m.call(whom);
  } else {
    log(me + ' waits for a call');
  }
}, {});
