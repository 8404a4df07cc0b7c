// The telephone: ring, take up, hang up.

import { button, el, field, form, replaceWhenNew } from './dom.js';
import { card, panelOf } from './forms.js';
import { nameOf } from './names.js';
import { perform } from './perform.js';
import { state, watch } from './store.js';

const kWords = { ringing: 'is rung by', calling: 'calls', talking: 'talks with' };

/** Buttons for what somebody outside can do to a call: {app, who, state}. */
export function callActions({ app, who, state: now }) {
  const say = (what) => () => perform('call', who ? [what, who] : [what], {}, app);
  const up = now === 'talking' ? [] : [button('Take it up', say('BEGINNING'), { class: 'small' })];
  return [...up, button('Hang up', say('TERMINATED'), { class: 'small' })];
}

function telephone(app) {
  const words = app.call?.state
    ? `${kWords[app.call.state] ?? app.call.state} ${app.call.with || 'somebody'}`
    : 'is in no call';
  return el(
    'li',
    { 'data-telephone': app.number },
    el('strong', {}, nameOf(app.number)),
    ` ${words}`,
    el('div', { class: 'meta' }, app.address ? `can be called at ${app.address}` : ''),
    app.call?.state
      ? el(
          'div',
          { class: 'row' },
          callActions({ app: app.number, who: app.call.with, state: app.call.state }),
        )
      : null,
  );
}

export function callsPanel() {
  const list = el('ul', { class: 'kept', tabindex: 0, 'aria-label': 'Telephones' });
  watch(['view', 'applications'], () => {
    const apps = (state.view?.applications ?? []).map(({ number, address, call }) => ({
      number,
      address,
      call,
    }));
    replaceWhenNew(
      list,
      apps.map((app) => [app, nameOf(app.number)]),
      () =>
        apps.length > 0
          ? apps.map(telephone)
          : [el('li', { class: 'empty' }, 'No application is connected.')],
    );
  });
  const ring = form(
    [
      field(
        'Who calls',
        el('input', { name: 'who', required: true, autocomplete: 'off', value: 'anna@example.org' }),
      ),
      el('button', { class: 'main' }, 'Ring'),
    ],
    ({ who }) => perform('call', ['INCOMING', who]),
    { 'data-stimulus': 'call' },
  );
  return panelOf(card('Call from outside', ring), card('The telephones', list));
}
