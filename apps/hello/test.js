// The test of hello: `morvik-dev test` runs it. docs/test.md tells what a test can say.

test('finds the device and asks who it is', async ({ app }) => {
  await app.interactive();
  await app.logs(/^hello, I am .* and the device listens to me$/);
  await app.logs('ping: OK');
  await app.logs('the device says: serial is VM-0000-0001');
});

test('lights the LED, and changes its colour for ever', async ({ device, app }) => {
  await app.sends({ led: { light: { color: 'red' } } });
  await app.logs('LED on, red: OK');
  await app.sends({ led: { fade: { color: 'blue', period: 1000 } } });
  await expect(device).toShow({ led: { color: 'blue' }, work: [] });

  await time.pass('2 s');
  await expect(device).toShow({ led: { color: 'green', effect: 'fade', period: 500 } });
  await app.logs('the LED is green now');
  await time.pass('1 min');
  await app.logs('the LED is white now');
});
