// The test of signed-request: `morvik-dev test` runs it. beside.json is the server that it asks.

test('signs what it asks', async ({ app }) => {
  const line = await app.logs(/^the server says: welcome, signed with OAuth /);
  expect(line).toMatch(/oauth_consumer_key="dpf43f3p2l4k3l03"/);
  expect(line).toMatch(/oauth_signature="[^"]+"/);
  expect(line).toMatch('oauth_timestamp="' + Math.floor(time.now() / 1000) + '"');
  await app.ends('script-exit');
});
