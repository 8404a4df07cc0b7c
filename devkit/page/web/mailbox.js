// The user's messages and contacts.

import { byId, choice, el, field, form, replaceWhenNew, setText } from './dom.js';
import { card, cardOf, panelOf } from './forms.js';
import { perform } from './perform.js';
import { state, watch } from './store.js';

const kMostShown = 200;
const kTypes = ['TEXT', 'SOUND', 'XML', 'MIXED'];

const whole = ({ firstname, lastname }) => [firstname, lastname].filter(Boolean).join(' ');
const called = (contact) => contact?.alias || whole(contact ?? {}) || contact?.uuid || 'nobody';

function message({ id, date, status, from, to, type, header, content }) {
  return el(
    'li',
    { class: status === 'UNREAD' ? 'unread' : '', 'data-message': id },
    el(
      'div',
      { class: 'meta' },
      `${status === 'UNREAD' ? 'Unread' : 'Read'}, ${called(from)} to ${called(to)}, ` +
        `${date ? new Date(date * 1000).toLocaleString() : 'no date'}${type && type !== 'TEXT' ? `, ${type}` : ''}`,
    ),
    header ? el('strong', {}, header) : null,
    el('div', {}, content ?? ''),
  );
}

function contact(one) {
  const objects = (one.objects ?? []).map(({ id, name }) => (name ? `${name} (${id})` : id)).join(', ');
  return el(
    'li',
    { 'data-contact': one.uuid },
    el('strong', {}, called(one)),
    el('div', { class: 'meta' }, [one.uuid, whole(one), objects].filter(Boolean).join(' · ')),
  );
}

function write() {
  const senders = el('datalist', { id: 'senders' });
  watch(['view'], () =>
    replaceWhenNew(senders, state.view?.contacts ?? [], () =>
      (state.view?.contacts ?? []).map((one) => el('option', { value: one.uuid }, called(one))),
    ),
  );
  return form(
    [
      field(
        'From (UUID)',
        el('input', { name: 'uuid', required: true, list: 'senders', autocomplete: 'off', value: 'anna' }),
      ),
      field('Type', choice(kTypes, { name: 'type' })),
      field('Header (optional)', el('input', { name: 'header' })),
      field('Text', el('textarea', { name: 'text', rows: 2, required: true }), { class: 'wide' }),
      el('button', { class: 'main' }, 'Put it into the box'),
      senders,
    ],
    async ({ uuid, text, type, header }, element) => {
      const named = { ...(type === 'TEXT' ? {} : { type }), ...(header ? { header } : {}) };
      const { done } = await perform('message', [uuid, text], named);
      if (done) element.elements.text.value = '';
    },
    { 'data-stimulus': 'message' },
  );
}

function messagesIn(shown, older) {
  if (shown.length === 0) return [el('li', { class: 'empty' }, 'The box is empty.')];
  const more = older > 0 ? [el('li', { class: 'empty' }, `and ${older} older ones`)] : [];
  return [...shown.map(message), ...more];
}

export function mailboxPanel() {
  const box = el('ul', { class: 'kept', id: 'messages-kept', tabindex: 0, 'aria-label': 'Messages' });
  const people = el('ul', { class: 'kept', id: 'contacts-kept', tabindex: 0, 'aria-label': 'Contacts' });
  const trouble = el('p', { class: 'empty' });
  watch(['view'], () => {
    const { messages = [], contacts = [] } = state.view ?? {};
    const unread = messages.filter((one) => one.status === 'UNREAD').length;
    setText(byId('count-mailbox'), unread > 0 ? unread : '');
    setText(trouble, state.view?.trouble ?? '');
    const shown = messages.slice(-kMostShown).toReversed();
    replaceWhenNew(box, [messages.length, shown], () => messagesIn(shown, messages.length - shown.length));
    replaceWhenNew(people, contacts, () =>
      contacts.length > 0 ? contacts.map(contact) : [el('li', { class: 'empty' }, 'There are no contacts.')],
    );
  });
  return panelOf(
    card('Write a message', write()),
    card('Messages', trouble, box),
    card('Contacts', people),
    cardOf('contact', 'Keep a contact', 'Keep it'),
  );
}
