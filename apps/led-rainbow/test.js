// The test of led-rainbow: `morvik-dev test` runs it.

test('goes through the colours, blinks and ends', async ({ app }) => {
  await app.logs('the LED is dark: OK');
  await app.logs('the LED is red');
  await app.sends({ led: { fade: { color: '#ff8000', period: 200 } } });
  await app.logs('the LED is violet');
  await app.sends({ led: { pulse: { color: 'white', period: 150, pulse: 3 } } });
  await app.logs('that was the rainbow');
  await app.ends('script-exit');
});

test('takes less than two seconds', async ({ app }) => {
  const begun = time.now();
  await app.ends('script-exit');
  expect(time.now() - begun).toBe(7 * 200 + 3 * 150);
});
