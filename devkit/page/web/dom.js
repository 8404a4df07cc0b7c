// Small helpers for elements. Whatever comes from outside enters the page as text only.

const kDrawing = 'http://www.w3.org/2000/svg';

export const byId = (id) => document.getElementById(id);

function apply(element, attributes) {
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === 'function') {
      element.addEventListener(name.slice(2), value);
    } else if (value === true) {
      element.setAttribute(name, '');
    } else if (value !== false && value !== null && value !== undefined) {
      element.setAttribute(name, value);
    }
  }
}

const present = (children) => children.filter((child) => child !== null && child !== undefined);

/** An element with attributes, listeners (`onclick: function`) and children: elements, or texts. */
export function el(name, attributes = {}, ...children) {
  const element = document.createElement(name);
  apply(element, attributes);
  element.append(...present(children.flat()));
  return element;
}

/** The same for a part of a drawing. */
export function drawn(name, attributes = {}) {
  const element = document.createElementNS(kDrawing, name);
  apply(element, attributes);
  return element;
}

/** A text in whose `words` are code. */
export const marked = (text) =>
  text.split(/`([^`]+)`/).map((part, i) => (i % 2 === 1 ? el('code', {}, part) : part));

export const button = (text, onclick, attributes = {}) =>
  el('button', { type: 'button', onclick, ...attributes }, text);

/** Writes a text only when it is another one, so that nothing is announced or laid out twice. */
export function setText(element, text) {
  const shown = String(text ?? '');
  if (element.textContent !== shown) element.textContent = shown;
}

/** Sets an attribute, or takes it away for false, null and undefined. */
export function setFlag(element, name, value) {
  if (value === false || value === null || value === undefined) {
    element.removeAttribute(name);
  } else {
    const text = value === true ? '' : String(value);
    if (element.getAttribute(name) !== text) element.setAttribute(name, text);
  }
}

const measured = new ResizeObserver((places) => {
  for (const { target } of places)
    setFlag(target, 'tabindex', target.scrollHeight > target.clientHeight + 1 ? 0 : null);
});

/** Writes a text that may be longer than its place, which then can be scrolled with the keyboard. */
export function setLongText(element, text, place = element) {
  setText(element, text);
  measured.observe(place); // measures once more, without a layout in between
}

// Whoever was at a button that is made anew stays there, or else stays near.
function comeBack(element, text) {
  const same = [...element.querySelectorAll('button')].find((one) => one.textContent === text);
  (same ?? element.closest('[tabindex]'))?.focus();
}

/** Replaces the children only when `key` tells that they differ from the last ones. */
export function replaceWhenNew(element, key, make) {
  const text = JSON.stringify(key);
  if (element.shownKey === text) return;
  element.shownKey = text;
  const focused = document.activeElement;
  const within = focused !== element && element.contains(focused);
  element.replaceChildren(...present(make()));
  if (within) comeBack(element, focused.textContent);
}

/** A labelled field of a form. */
export const field = (text, input, attributes = {}) => el('label', attributes, text, input);

export function choice(values, attributes = {}) {
  const options = values.map((value) =>
    Array.isArray(value) ? el('option', { value: value[0] }, value[1]) : el('option', { value }, value),
  );
  return el('select', attributes, options);
}

/** A form that hands its function the values of its named fields, those that are not empty. */
export function form(children, submitted, attributes = {}) {
  const element = el('form', { class: 'fields', ...attributes }, children);
  element.addEventListener('submit', (event) => {
    event.preventDefault();
    const values = {};
    for (const [name, value] of new FormData(element)) if (value !== '') values[name] = value;
    submitted(values, element);
  });
  return element;
}
