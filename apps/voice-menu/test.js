// The test of voice-menu: `morvik-dev test` runs it.

function meaning(choice) {
  return '<menu><choice>' + choice + '</choice></menu>';
}

test('does what it is told', async ({ device, app }) => {
  await app.logs('listening');
  await device.recognition('light on', 90, meaning('on'));
  await app.logs('heard "light on" (90): on');
  await expect(device).toShow({ led: { color: 'white' } });
  await app.logs('listening');
  await device.recognition('goodbye', 80, meaning('bye'));
  await app.logs('goodbye');
  await app.ends('script-exit');
});

test('asks again, and knows its menu', async ({ device, app }) => {
  await app.logs('listening');
  await device.recognition('mumble', 10);
  await app.logs('please say that again');
  await app.logs('listening');
  await device.recognition('tea', 90, meaning('tea'));
  await app.logs('that is not in the menu');
});

test('is launched by voice', { launch: 'ASR;menu;' }, async ({ app }) => {
  await app.logs('launched by "menu"');
});
