// The test of photo-booth: `morvik-dev test` runs it.

test('takes a photo and plays it', async ({ device, app }) => {
  await app.logs('the booth is open');
  await device.button('SIMPLE');
  await app.logs('photo: OK');
  await app.logs(/^photo: TERMINATED/);
  await app.logs('playing the photo: OK');
  await app.sends({ multimedia: { play: { url: '/tmp/picture.jpg' } } });
});

test('records a message and plays it', async ({ device, app }) => {
  await app.interactive();
  await device.button('DOUBLE');
  await app.logs('recording: OK');
  await app.logs(/^recording: TERMINATED/);
  await app.logs('playing the recording: OK');
  await app.sends({ multimedia: { play: { url: '/tmp/record.flac' } } });
});

test('tells what it can do', async ({ device, app }) => {
  await app.interactive();
  await device.button('TRIPLE');
  await app.logs('press once for a photo, twice for a message');
});
