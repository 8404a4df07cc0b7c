// The test of dock-tour: `morvik-dev test` runs it.

test('drives its tour and parks', async ({ device, app }) => {
  for (const direction of ['UP', 'LEFT', 'DOWN', 'RIGHT']) {
    await app.logs('going ' + direction);
    await expect(device).toShow({ dock: { moving: direction } });
  }
  await app.logs('parked');
  await expect(device).toShow({ dock: { moving: 'STOP', led: { color: 'black' } } });
});
