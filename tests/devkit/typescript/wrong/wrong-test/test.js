test('says what no test can say', async ({ device, app }) => {
  await device.press('SIMPLE'); // red
  await device.ear('LEFT', [5]); // red
  await app.log('hello'); // red
  await expect(app.lines).toHave('hello'); // red
});

test('has no body', { at: '2026-01-01T12:00:00Z' }); // red

test('has an option that there is none of', { start: false }, async () => {}); // red
