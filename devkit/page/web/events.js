// Where an event goes.

import { byId, setFlag } from './dom.js';
import { addMessage } from './messages.js';
import { addNote } from './notes.js';
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

/** An event as the device tells it; an old one is only kept. */
export function hearEvent(event, old) {
  if (event.event === 'received' || event.event === 'sent') {
    addMessage(event);
    return;
  }
  if (event.event === 'changed') return;
  addNote(event);
  if (event.event !== 'stimulus') return;
  if (event.name === 'rfid') hearTag(event.arguments ?? {});
  if (!old) show(event);
}
