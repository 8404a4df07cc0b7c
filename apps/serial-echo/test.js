// The test of serial-echo: `morvik-dev test` runs it.

test('answers every line with the same line', async ({ device, app }) => {
  await app.logs('listening on /dev/ttyS1');
  await device.serial('/dev/ttyS1', 'hello');
  await app.logs('line 1 from /dev/ttyS1: hello');
  await device.serial('/dev/ttyS1', 'again');
  await app.logs('line 2 from /dev/ttyS1: again');
  await app.sends({ serial: { write: { port: '/dev/ttyS1', data: 'again', base: 'a' } } });
});
