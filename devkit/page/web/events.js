// Where an event goes.

import { byId, setFlag } from './dom.js';
import { addMessage } from './messages.js';
import { rememberName } from './names.js';
import { addNote } from './notes.js';
import { state } from './store.js';
import { hearTag } from './tags.js';

const kShown = 900; // milliseconds that a touch is seen

function flash(id, mark) {
  const element = byId(id);
  setFlag(element, mark, true);
  setTimeout(() => setFlag(element, mark, false), kShown);
}

const first = (values) => String(Object.values(values).flat()[0] ?? '');

// The page that did it and all others show it alike.
function show({ name, arguments: values = {} }) {
  const what = first(values).toUpperCase();
  if (name === 'ears' && what.startsWith('BLOCKED_'))
    flash(`ear-${what.slice(8).toLowerCase()}`, 'data-blocked');
  if (name === 'button') flash('knob', 'data-pressed');
}

// A real device has no stimulus that tells of a touch. Its messages do.
function showTouch({ buttonCallback, rfidCallback }, old) {
  if (rfidCallback) hearTag(rfidCallback);
  if (buttonCallback && !old) flash('knob', 'data-pressed');
}

/** An event as the device tells it; an old one is only kept. */
export function hearEvent(event, old) {
  rememberName(event);
  if (event.event === 'received' || event.event === 'sent') {
    addMessage(event);
    if (state.mode === 'relay' && event.event === 'sent') showTouch(event.message, old);
    return;
  }
  if (event.event === 'changed') return;
  addNote(event);
  if (event.event !== 'stimulus') return;
  if (event.name === 'rfid') hearTag(event.arguments ?? {});
  if (!old) show(event);
}
