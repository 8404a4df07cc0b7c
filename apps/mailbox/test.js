// The test of mailbox: `morvik-dev test` runs it.

test('tells what nobody has read', { launch: false }, async ({ device, app }) => {
  await device.contact('u1', { alias: 'Anna' });
  await device.message('u1', 'Are you there?');
  await app.launch();
  await app.logs('contacts: 1');
  await app.logs('unread messages: 1');
  await app.sends({ led: { pulse: { color: 'blue', period: 200, pulse: 3 } } });
  await app.logs('Anna: Are you there?');
  await app.logs('marked as read: 1');
  await expect(device).toShow({ messages: [{ content: 'Are you there?', status: 'READ' }] });
});

test('looks again, also when a query has failed', async ({ device, app }) => {
  await app.logs('contacts: 0');
  await device.message('stranger', '<a/>', { type: 'XML' });
  await app.logs('stranger: XML');
  await app.logs('marked as read: 1');
  await device.refuse('ERROR', 'morvikMessageQuery');
  await app.sends({ morvikMessageQuery: { action: 'LIST' } });
  await device.message('u1', 'Still there?');
  await app.logs('u1: Still there?');
});
