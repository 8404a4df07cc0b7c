// The drawer of tags: drag one onto the device, or press its button, and again to take it away. Which
// one lies there is learned from what happens, so that every page shows the same.

import { announce } from './announce.js';
import { button, byId, el, field, form, replaceWhenNew } from './dom.js';
import { card, panelOf } from './forms.js';
import { choice } from './dom.js';
import { redraw } from './frame.js';
import { perform, saveTags, stimulusNamed } from './perform.js';
import { showTag } from './scene.js';
import { changed, state, watch } from './store.js';

const kStartsDrag = 6; // pixels
const kNear = 0.16; // of the drawing's width around the reader
const kColors = { RED: '#d33', BLUE: '#36c', GREEN: '#2a2', YELLOW: '#ed0', PINK: '#f8b', BLACK: '#111', GREY: '#888',
  ORANGE: '#f80', PURPLE: '#82c', WHITE: '#fff', DARK_RED: '#811', DARK_BLUE: '#148', DARK_GREEN: '#151',
  DARK_YELLOW: '#a80', BROWN: '#742' };
const kFirstTags = [
  { id: 'd0021a0353184691', name: 'Fox', type: 'FLAT', color: 'ORANGE', content: 'the fox' },
  { id: 'd0021a0353184692', name: 'Moon', type: 'FLAT', color: 'DARK_BLUE', content: 'the moon' },
  { id: 'd0021a0353184693', name: 'Apple', type: 'MINIVORT', color: 'RED' },
];

let held = null; // its id
const tagsNow = () => (state.tags.length > 0 ? state.tags : kFirstTags);

function show(id, direction) {
  const { name: label = '', type, color, app, pict, content, hex } = tagsNow().find((tag) => tag.id === id) ?? {};
  const named = Object.fromEntries(Object.entries({ type, color, app, pict, content, hex }).filter(([, v]) => v));
  void label;
  return perform('rfid', [id, direction], named);
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
  const tag = held === null ? null : tagsNow().find((one) => one.id === held) ?? { id: held };
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

// A pill that is moved more than a little is dragged; the click that ends it does not count.
function makeDraggable(pill, tag) {
  let from = null;
  let ghost = null;
  const follow = (event) => {
    if (from === null) return;
    if (!ghost && Math.hypot(event.clientX - from.x, event.clientY - from.y) > kStartsDrag) {
      ghost = el('div', { class: 'tag-ghost' }, tag.name || tag.id);
      document.body.append(ghost);
      pill.classList.add('dragged');
    }
    if (ghost) ghost.style.transform = `translate(${event.clientX + 8}px, ${event.clientY + 8}px)`;
    byId('reader').toggleAttribute('data-near', ghost !== null && isNear(event));
  };
  const end = (event) => {
    const dropped = ghost !== null;
    ghost?.remove();
    pill.classList.remove('dragged');
    byId('reader').removeAttribute('data-near');
    if (dropped && event.type === 'pointerup' && isNear(event) && held !== tag.id) hold(tag.id);
    if (dropped && event.type === 'pointerup' && !isNear(event) && held === tag.id) show(tag.id, 'OUT');
    pill.dropped = dropped;
    from = ghost = null;
  };
  pill.addEventListener('pointerdown', (event) => {
    if (event.button !== 0) return;
    pill.setPointerCapture(event.pointerId);
    pill.dropped = false;
    from = { x: event.clientX, y: event.clientY };
  });
  pill.addEventListener('pointermove', follow);
  pill.addEventListener('pointerup', end);
  pill.addEventListener('pointercancel', end);
}

function pillFor(tag) {
  const pill = el('button', {
    type: 'button', class: 'tag-pill', 'data-tag': tag.id, 'aria-pressed': 'false', title: `Tag ${tag.id}`,
    onclick: () => pill.dropped || toggle(tag.id),
  }, tag.name || tag.id);
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
  return form([
    field('Name', text('name')), field('ID', text('id', { required: true })),
    field('Type', optional('type')), field('Colour', optional('color')),
    field('App', text('app', { type: 'number' })), field('Picture', text('pict', { type: 'number' })),
    field('Content, as text', text('content')), field('or as hex', text('hex', { pattern: '([0-9a-fA-F]{2})*' })),
    el('button', { class: 'main' }, 'Keep this tag'),
  ], (tag, element) => {
    keep([...tagsNow().filter((one) => one.id !== tag.id), tag]);
    element.reset();
  }, { 'aria-label': 'A new tag' });
}

export function tagsPanel() {
  const drawer = el('div', { class: 'drawer', id: 'drawer', role: 'group', 'aria-label': 'Saved tags' });
  const away = choice([], { 'aria-label': 'Tag to throw away' });
  const draw = () => {
    replaceWhenNew(drawer, tagsNow(), () => tagsNow().map(pillFor));
    replaceWhenNew(away, tagsNow(), () => tagsNow().map((tag) => el('option', { value: tag.id }, tag.name || tag.id)));
    showHeld();
  };
  watch(['hello', 'tags'], draw);
  redraw(draw);
  byId('tag').addEventListener('click', () => held !== null && show(held, 'OUT'));
  return panelOf(
    card('The drawer', el('p', {}, 'Drag a tag onto the reader below the LED, or press it. Press it again to take it away.'),
      drawer, el('div', { class: 'row' }, field('Throw away', away, { class: 'field' }),
        button('Throw away', () => throwAway(away.value), { class: 'small' }))),
    card('A new tag', newTag()));
}
