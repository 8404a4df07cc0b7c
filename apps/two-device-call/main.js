// two-device-call: one device calls another. Launch it twice, once for each device:
//   two-device-call demo 127.0.0.1:7410           waits for a call and answers it
//   two-device-call demo bob@127.0.0.1:7411       calls bob
//
// The text in front of the @ is whom to call, what follows is where this application's own device is,
// as host:port.
var at = instanceName.lastIndexOf('@');
var whom = at < 0 ? '' : instanceName.substring(0, at);
var address = (instanceName.substring(at + 1) || '127.0.0.1:7410').split(':');

// Commands for a call take no function: how it goes is heard here alone. Every step returns true, or
// the next one would not be heard.
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
  // With which account the device makes and takes calls: its id, its domain, its password, and a
  // server that helps it through a router.
  morvik.m2m.account(appName, 'sip.example.org', 'password', 'stun.example.org');
  if (whom) {
    log('calling ' + whom);
    morvik.m2m.call(whom);
  } else {
    log('waiting for a call');
  }
}, {});
