// The test of talking-clock: `morvik-dev test` runs it.

const morning = { at: '2026-01-01T08:14:30Z' };

test('tells the time at once, and at every full minute', morning, async ({ device, app }) => {
  await app.logs('the device speaks en');
  await app.logs('told in en: It is 8:14');
  await time.pass('20 s');
  expect(app.lines).not.toContain('told in en: It is 8:15');
  await app.logs('told in en: It is 8:15', { within: '11 s' });
  await app.logs('told in en: It is 8:16', { within: '61 s' });
  await expect(device).toShow({ speech: { text: 'It is 8:16', lang: 'en' } });
});
