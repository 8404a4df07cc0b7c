// The drawer of tags: drag one onto the device, or press its button, and again to take it away. Which
// one lies there is learned from what happens, so that every page shows the same.

import { announce } from './announce.js';
import { byId, choice, el, field, form, replaceWhenNew } from './dom.js';
import { card, panelOf } from './forms.js';
import { redraw } from './frame.js';
import { perform, saveTags, stimulusNamed } from './perform.js';
import { showTag } from './scene.js';
import { changed, state, watch } from './store.js';

const kStartsDrag = 6; // pixels
const kNear = 0.16; // of the drawing's width around the reader
const kColors = {
  RED: '#d33',
  BLUE: '#36c',
  GREEN: '#2a2',
  YELLOW: '#ed0',
  PINK: '#f8b',
  BLACK: '#111',
  GREY: '#888',
  ORANGE: '#f80',
  PURPLE: '#82c',
  WHITE: '#fff',
  DARK_RED: '#811',
  DARK_BLUE: '#148',
  DARK_GREEN: '#151',
  DARK_YELLOW: '#a80',
  BROWN: '#742',
};
const kFirstTags = [
  { id: 'd0021a0353184691', name: 'Fox', type: 'FLAT', color: 'ORANGE', content: 'the fox' },
  { id: 'd0021a0353184692', name: 'Moon', type: 'FLAT', color: 'DARK_BLUE', content: 'the moon' },
  { id: 'd0021a0353184693', name: 'Apple', type: 'MINIVORT', color: 'RED' },
];

let held = null; // its id
const tagsNow = () => (state.tags.length > 0 ? state.tags : kFirstTags);

function show(id, direction) {
  const { type, color, app, pict, content, hex } = tagsNow().find((tag) => tag.id === id) ?? {};
  const filled = Object.entries({ type, color, app, pict, content, hex }).filter(([, value]) => value);
  return perform('rfid', [id, direction], Object.fromEntries(filled));
}

async function hold(id) {
  if (held !== null) await show(held, 'OUT');
  await show(id, 'IN');
}

const toggle = (id) => (held === id ? show(id, 'OUT') : hold(id));

/** A stimulus for the reader, from wherever it came. */
export function hearTag({ id, direction }) {
  const [tag, way] = [id, direction].map((value) => (Array.isArray(value) ? value[0] : value));
  if (way === 'OUT') {
    if (held === tag || held === null) held = null;
  } else if (way === 'IN') {
    held = tag;
  }
  redraw(showHeld);
}

function showHeld() {
  const tag = held === null ? null : (tagsNow().find((one) => one.id === held) ?? { id: held });
  showTag(tag);
  for (const pill of document.querySelectorAll('[data-tag]')) {
    pill.setAttribute('aria-pressed', String(pill.dataset.tag === held));
  }
}

function isNear(event) {
  const box = byId('reader').getBoundingClientRect();
  const away = Math.hypot(event.clientX - box.x - box.width / 2, event.clientY - box.y - box.height / 2);
  return away < byId('device').getBoundingClientRect().width * kNear;
}

// A pill on its way: what hangs at the pointer, and where it is dropped.
class Drag {
  constructor(pill, tag, event) {
    Object.assign(this, { pill, tag, from: { x: event.clientX, y: event.clientY }, ghost: null });
    pill.setPointerCapture(event.pointerId);
  }

  // Moved only a little it is still a click.
  #lift() {
    this.ghost = el('div', { class: 'tag-ghost' }, this.tag.name || this.tag.id);
    document.body.append(this.ghost);
    this.pill.classList.add('dragged');
  }

  follow(event) {
    const way = Math.hypot(event.clientX - this.from.x, event.clientY - this.from.y);
    if (!this.ghost && way > kStartsDrag) this.#lift();
    if (!this.ghost) return;
    this.ghost.style.transform = `translate(${event.clientX + 8}px, ${event.clientY + 8}px)`;
    byId('reader').toggleAttribute('data-near', isNear(event));
  }

  /** Gives whether it was dragged at all. */
  end(event) {
    byId('reader').removeAttribute('data-near');
    this.pill.classList.remove('dragged');
    if (!this.ghost) return false;
    this.ghost.remove();
    const { id } = this.tag;
    if (event.type === 'pointerup' && isNear(event) !== (held === id)) toggle(id);
    return true;
  }
}

// The click that ends a drag does not count.
function makeDraggable(pill, tag) {
  let drag = null;
  pill.addEventListener('pointerdown', (event) => {
    pill.dropped = false;
    if (event.button === 0) drag = new Drag(pill, tag, event);
  });
  pill.addEventListener('pointermove', (event) => drag?.follow(event));
  for (const end of ['pointerup', 'pointercancel']) {
    pill.addEventListener(end, (event) => {
      pill.dropped = drag?.end(event) ?? false;
      drag = null;
    });
  }
}

function pillFor(tag) {
  const pill = el(
    'button',
    {
      type: 'button',
      class: 'tag-pill',
      'data-tag': tag.id,
      'aria-pressed': 'false',
      title: `Tag ${tag.id}`,
      onclick: () => pill.dropped || toggle(tag.id),
    },
    tag.name || tag.id,
  );
  if (kColors[tag.color]) pill.style.setProperty('--pill', kColors[tag.color]);
  makeDraggable(pill, tag);
  return pill;
}

async function keep(tags) {
  const outcome = await saveTags(tags);
  if (!outcome.done) return;
  state.tags = tags;
  changed('tags');
}

function throwAway(id) {
  const tag = tagsNow().find((one) => one.id === id);
  announce(`${tag?.name || id} is thrown away`);
  return keep(tagsNow().filter((one) => one.id !== id));
}

function choicesFor(name) {
  return stimulusNamed('rfid')?.arguments.find((argument) => argument.name === name)?.choices ?? [];
}

function newTag() {
  const text = (name, attributes = {}) => el('input', { name, autocomplete: 'off', ...attributes });
  const optional = (name) => choice([['', '(none)'], ...choicesFor(name)], { name });
  return form(
    [
      field('Name', text('name')),
      field('ID', text('id', { required: true })),
      field('Type', optional('type')),
      field('Colour', optional('color')),
      field('App', text('app', { type: 'number' })),
      field('Picture', text('pict', { type: 'number' })),
      field('Content, as text', text('content')),
      field('or as hex', text('hex', { pattern: '([0-9a-fA-F]{2})*' })),
      el('button', { class: 'main' }, 'Keep this tag'),
    ],
    (tag, element) => {
      keep([...tagsNow().filter((one) => one.id !== tag.id), tag]);
      element.reset();
    },
    { 'aria-label': 'A new tag' },
  );
}

function throwing() {
  const which = choice([], { name: 'id' });
  const draw = () =>
    replaceWhenNew(which, tagsNow(), () =>
      tagsNow().map((tag) => el('option', { value: tag.id }, tag.name || tag.id)),
    );
  const element = form(
    [field('A tag that is no longer needed', which), el('button', {}, 'Throw it away')],
    ({ id }) => throwAway(id),
    { 'aria-label': 'Throw a tag away' },
  );
  return { element, draw };
}

// How an application is launched by one of the tags, to choose from.
function launches() {
  const list = el('datalist', { id: 'launches' }, el('option', { value: 'plain' }));
  for (const { id, app, type, pict, color, content } of tagsNow()) {
    list.append(
      el('option', {
        value: ['RFID', id, app, type, pict, color, content].map((part) => part ?? '').join(';'),
      }),
    );
  }
  return list;
}

export function tagsPanel() {
  const drawer = el('div', { class: 'drawer', id: 'drawer', role: 'group', 'aria-label': 'Saved tags' });
  const away = throwing();
  const draw = () => {
    replaceWhenNew(drawer, tagsNow(), () => tagsNow().map(pillFor));
    away.draw();
    byId('launches')?.remove();
    drawer.after(launches());
    showHeld();
  };
  watch(['hello', 'tags'], draw);
  redraw(draw);
  byId('tag').addEventListener('click', () => held !== null && show(held, 'OUT'));
  return panelOf(
    card(
      'The drawer',
      el('p', {}, 'Drag a tag onto the reader below the LED, or press it. Press it again to take it away.'),
      drawer,
      away.element,
    ),
    card('A new tag', newTag()),
  );
}
