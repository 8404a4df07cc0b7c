// The test of radio: `morvik-dev test` runs it.

test('plays a station and knows the library', async ({ device, app }) => {
  await app.logs('http://radio.example.org/jazz: OK');
  await app.logs('player: PLAY');
  await expect(device).toShow({ player: { mode: 'playing', url: 'http://radio.example.org/jazz' } });
  for (const line of ['first playlist: breakfast', 'first artist: The Tin Whistles',
                      'first genre: folk', 'first folder: /music/morning',
                      'first song: /music/morning/kettle.mp3']) {
    expect(app.lines).toContain(line);
  }
});

test('is worked with the button', async ({ device, app }) => {
  await app.logs('player: PLAY');
  await device.button('SIMPLE');
  await app.logs('player: PAUSE');
  await device.button('SIMPLE');
  await app.logs('player: RESUME');
  await device.button('DOUBLE');
  await app.logs('http://radio.example.org/news: OK');
  await device.button('LONG_START');
  await app.logs('off: OK');
  await expect(device).toShow({ player: { mode: 'stopped' } });
  await device.button('SIMPLE');
  await app.logs('http://radio.example.org/news: OK');
  await device.player('MUSIC_UPDATE');
  await app.logs('player: MUSIC_UPDATE');
});
