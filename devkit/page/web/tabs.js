// Tabs: one panel at a time, arrow keys go along, and a reload comes back to the same one.

import { byId, el } from './dom.js';

const keys = { ArrowRight: 1, ArrowDown: 1, ArrowLeft: -1, ArrowUp: -1 };

function remembered(place, names) {
  const name = sessionStorage.getItem(place);
  return names.includes(name) ? name : names[0];
}

/** `tabs` holds {name, label, panel}. Gives a function that shows a tab by its name. */
export function makeTabs(id, tabs) {
  const strip = byId(`${id}-tabs`);
  const names = tabs.map((tab) => tab.name);
  const buttons = new Map();

  function show(name, focus = false) {
    sessionStorage.setItem(`tab-${id}`, name);
    for (const tab of tabs) {
      const chosen = tab.name === name;
      const one = buttons.get(tab.name);
      one.setAttribute('aria-selected', String(chosen));
      one.tabIndex = chosen ? 0 : -1;
      tab.panel.hidden = !chosen;
      if (chosen && focus) one.focus();
      if (chosen) tab.shown?.();
    }
  }

  function step(event) {
    const at = names.findIndex((name) => buttons.get(name) === event.target);
    const places = { Home: 0, End: names.length - 1 };
    let next = places[event.key];
    if (event.key in keys) next = (at + keys[event.key] + names.length) % names.length;
    if (next === undefined || at < 0) return;
    event.preventDefault();
    show(names[next], true);
  }

  for (const { name, label, panel } of tabs) {
    const one = el('button', {
      type: 'button', role: 'tab', id: `tab-${name}`, 'aria-controls': `panel-${name}`, 'data-tab': name,
      onclick: () => show(name),
    }, label, el('span', { class: 'count', id: `count-${name}` }));
    buttons.set(name, one);
    panel.id = `panel-${name}`;
    panel.setAttribute('role', 'tabpanel');
    panel.setAttribute('aria-labelledby', one.id);
    byId(`${id}-panels`).append(panel);
    strip.append(one);
  }
  strip.addEventListener('keydown', step);
  show(remembered(`tab-${id}`, names));
  return show;
}
