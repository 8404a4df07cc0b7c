// The test of weather: `morvik-dev test` runs it. beside.json is the server that it asks.

test('tells the weather and ends', async ({ app }) => {
  await app.logs('Home: rain, 11 degrees');
  await app.logs('Tomorrow: sun, from 8 to 19 degrees');
  await app.ends('script-exit');
});

const broken = JSON.stringify({ address: '/weather.json', answers: [] });

test('minds a server that knows nothing', { files: { 'beside.json': broken } }, async ({ app }) => {
  await app.logs('no weather today: the server says 404');
  await app.ends('script-exit');
});
