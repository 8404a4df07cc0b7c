// The test of ear-dance: `morvik-dev test` runs it.

test('dances all figures', async ({ device, app }) => {
  await app.logs('ears: TERMINATED, left at 0, right at 0');
  for (let figure = 1; figure <= 6; figure++) await app.logs('figure ' + figure + ' of 6');
  await app.logs('the dance is over');
  await expect(device).toShow({ ears: { left: 4, right: 0 } });
});

test('hears that somebody holds an ear', async ({ device, app }) => {
  await app.logs('the dance is over', { within: '1 min' });
  await device.ears('BLOCKED_LEFT');
  await app.logs('somebody holds an ear: BLOCKED_LEFT');
  await device.ears('BLOCKED_RIGHT');
  await app.logs('somebody holds an ear: BLOCKED_RIGHT');
});
