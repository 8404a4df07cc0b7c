// The test of photo-upload: `morvik-dev test` runs it. beside.json is the server that gets the picture.

test('sends the picture', async ({ app }) => {
  await app.logs('the server says: HTTP/1.1 200');
  await app.logs(/picture\.svg/);
  await app.ends('script-exit');
});

test('tells when there is no picture', { files: { 'picture.svg': null } }, async ({ app }) => {
  await app.logs(/^the picture did not get through to http:/);
  await app.ends('script-exit');
});
