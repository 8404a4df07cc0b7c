// Tabs: one panel at a time, arrow keys go along, and a reload comes back to the same one.

import { byId, el } from './dom.js';
import { keep, recall } from './memory.js';

const keys = { ArrowRight: 1, ArrowDown: 1, ArrowLeft: -1, ArrowUp: -1 };

function remembered(place, names) {
  const name = recall(place, 'sessionStorage');
  return names.includes(name) ? name : names[0];
}

class Tabs {
  constructor(id, tabs) {
    this.place = `tab-${id}`;
    this.tabs = tabs;
    this.names = tabs.map((tab) => tab.name);
    this.buttons = new Map();
    for (const tab of tabs) this.#add(byId(`${id}-tabs`), byId(`${id}-panels`), tab);
    byId(`${id}-tabs`).addEventListener('keydown', (event) => this.#step(event));
    this.#choose(remembered(this.place, this.names));
  }

  #add(strip, panels, { name, label, panel }) {
    const one = el(
      'button',
      {
        type: 'button',
        role: 'tab',
        id: `tab-${name}`,
        'aria-controls': `panel-${name}`,
        onclick: () => this.show(name),
      },
      label,
      el('span', { class: 'count', id: `count-${name}` }),
    );
    this.buttons.set(name, one);
    panel.id = `panel-${name}`;
    panel.setAttribute('role', 'tabpanel');
    panel.setAttribute('aria-labelledby', one.id);
    panels.append(panel);
    strip.append(one);
  }

  show(name) {
    keep(this.place, name, 'sessionStorage');
    this.#choose(name);
  }

  /** Shows one that nobody has chosen yet. */
  suggest(name) {
    if (recall(this.place, 'sessionStorage') === null) this.#choose(name);
  }

  #choose(name) {
    for (const tab of this.tabs) {
      const chosen = tab.name === name;
      const one = this.buttons.get(tab.name);
      one.setAttribute('aria-selected', String(chosen));
      one.tabIndex = chosen ? 0 : -1;
      tab.panel.hidden = !chosen;
      if (chosen) tab.shown?.();
    }
  }

  #step(event) {
    const at = this.names.findIndex((name) => this.buttons.get(name) === event.target);
    const places = { Home: 0, End: this.names.length - 1 };
    let next = places[event.key];
    if (event.key in keys) next = (at + keys[event.key] + this.names.length) % this.names.length;
    if (next === undefined || at < 0) return;
    event.preventDefault();
    this.show(this.names[next]);
    this.buttons.get(this.names[next]).focus();
  }
}

/** `tabs` holds {name, label, panel}, and `shown` for what is to be done when one is chosen. */
export const makeTabs = (id, tabs) => new Tabs(id, tabs);
