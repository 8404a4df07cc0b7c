// The tabs of what the world can do. Made once the table of stimuli is known.

import { accountsPanel } from './accounts.js';
import { callsPanel } from './calls.js';
import { everythingPanel } from './everything.js';
import { mailboxPanel } from './mailbox.js';
import { mediaPanel } from './media.js';
import { misbehavePanel } from './misbehave.js';
import { serialPanel } from './serial.js';
import { makeTabs } from './tabs.js';
import { tagsPanel } from './tags.js';
import { touchPanel } from './touch.js';
import { voicePanel } from './voice.js';

export function makeWorld(ears) {
  makeTabs('world', [
    { name: 'touch', label: 'Touch', panel: touchPanel(ears) },
    { name: 'tags', label: 'Tags', panel: tagsPanel() },
    { name: 'voice', label: 'Voice', panel: voicePanel() },
    { name: 'media', label: 'Media', panel: mediaPanel() },
    { name: 'serial', label: 'Serial', panel: serialPanel() },
    { name: 'calls', label: 'Calls', panel: callsPanel() },
    { name: 'mailbox', label: 'Mailbox', panel: mailboxPanel() },
    { name: 'accounts', label: 'Accounts', panel: accountsPanel() },
    { name: 'misbehave', label: 'Misbehave', panel: misbehavePanel() },
    { name: 'all', label: 'Everything', panel: everythingPanel() },
  ]);
}
