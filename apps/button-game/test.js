// The test of button-game: `morvik-dev test` runs it.

// Nobody has played before.
const fresh = { files: { 'best.txt': null } };

test('tells how long it took, and keeps the best time', fresh, async ({ device, app }) => {
  await app.logs('wait for green');
  await device.button('DOUBLE');
  await app.logs('no best time yet');

  await app.logs('press!');
  await expect(device).toShow({ led: { color: 'green' } });
  await time.pass('250 ms');
  await device.button('SIMPLE');
  await app.logs('that took 250 ms');
  await app.logs('a new best time');
  expect(await app.read('best.txt')).toBe('250');
});

test('minds a press that comes too early', fresh, async ({ device, app }) => {
  await app.logs('wait for green');
  await device.button('SIMPLE');
  await app.logs('too early');
  await app.logs('press!');
});

test('knows the best time of an earlier game', { files: { 'best.txt': '99' } },
     async ({ device, app }) => {
       await app.interactive();
       await device.button('DOUBLE');
       await app.logs('the best time is 99 ms');
       await device.button('LONG_START');
       await app.logs('bye');
       await app.ends('script-exit');
     });
