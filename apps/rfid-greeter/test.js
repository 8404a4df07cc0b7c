// The test of rfid-greeter: `morvik-dev test` runs it.

test('greets a tag and says goodbye', async ({ device, app }) => {
  await app.logs('waiting for tags');
  await device.rfid('d0021a', 'IN', { type: 'FLAT', color: 'RED', content: 'Anna' });
  await app.logs('IN d0021a FLAT RED');
  await expect(device).toShow({ speech: { text: 'Hello Anna', lang: 'en' } });
  await app.logs('said: Hello Anna');
  await device.rfid('d0021a', 'OUT');
  await app.logs('OUT d0021a undefined undefined');
  await app.logs('said: Goodbye tag d0021a');
});

test('speaks one text at a time', async ({ device, app }) => {
  await app.interactive();
  await device.rfid('one', 'IN');
  await device.rfid('two', 'IN');
  await app.logs('said: Hello tag one');
  await app.logs('said: Hello tag two');
});

test('is launched by a tag', { launch: 'RFID;d0021a;1;FLAT;2;RED;Anna' }, async ({ app }) => {
  await app.logs('launched by the tag d0021a');
  await app.logs('said: Welcome Anna');
});
