// The test of two-device-call: `morvik-dev test` runs it.

// The same application twice; anna is launched when bob waits.
const bobAndAnna = {
  applications: [{ instance: 'bob@DEVICE' }, { instance: 'anna-bob@DEVICE', launch: false }]
};

test('calls, talks and hangs up', bobAndAnna, async ({ apps: [bob, anna] }) => {
  await bob.logs('bob waits for a call');
  await anna.launch();
  await anna.logs('anna calls bob');
  await bob.logs('anna@sip.example.org calls');
  await bob.logs('talking with anna@sip.example.org');
  await anna.logs('talking with bob');
  await anna.logs('hanging up');
  await anna.logs('the call with bob is over');
  await bob.logs('the call with anna@sip.example.org is over');
});

test('answers somebody outside', bobAndAnna, async ({ device, apps: [bob] }) => {
  await bob.logs('bob waits for a call');
  await device.for(bob).call('INCOMING', 'carol');
  await bob.logs('talking with carol');
  await device.for(bob).call('TERMINATED');
  await bob.logs('the call with carol is over');
});
