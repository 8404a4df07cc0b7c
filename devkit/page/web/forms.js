// Forms for stimuli, drawn from their table.

import { choice, el, field, form } from './dom.js';
import { perform, stimulusNamed } from './perform.js';

function limits({ least, most }) {
  const small = (number) => (Math.abs(number ?? Infinity) < 2 ** 31 - 1 ? number : undefined);
  return { min: small(least), max: small(most) };
}

function textInput(argument, attributes = {}) {
  return el('input', {
    name: argument.name,
    type: argument.secret ? 'password' : 'text',
    required: argument.needed,
    placeholder: argument.default ?? '',
    autocomplete: argument.secret ? 'new-password' : 'off',
    ...attributes,
  });
}

// Some numbers have words in their place, such as ALWAYS.
function numberOrWord(argument) {
  const { choices, default: usual } = argument;
  return textInput(argument, {
    pattern: ['-?[0-9]+', ...choices].join('|'),
    placeholder: [usual, ...choices].filter(Boolean).join(' or '),
  });
}

function inputFor(argument) {
  const { name, kind, needed, many, choices = [] } = argument;
  if (kind === 'choice' || kind === 'name') {
    if (many)
      return el(
        'select',
        { name, multiple: true, required: needed },
        choices.map((c) => el('option', {}, c)),
      );
    return choice(
      needed ? choices : [['', argument.default ? `(${argument.default})` : '(left out)'], ...choices],
      { name, required: needed },
    );
  }
  if (kind === 'number' && choices.length > 0) return numberOrWord(argument);
  if (many) return el('textarea', { name, rows: 2, required: needed, placeholder: 'one on each line' });
  return textInput(argument, kind === 'number' ? { type: 'number', step: 1, ...limits(argument) } : {});
}

function fieldsFor(argument) {
  if (argument.kind === 'pair' && argument.choices) {
    return argument.choices.map((name) =>
      field(name, textInput({ ...argument, needed: false, name: `${argument.name}\n${name}` })),
    );
  }
  return [
    field(
      argument.name + (argument.needed ? '' : ' (optional)'),
      inputFor(argument),
      argument.many ? { class: 'wide' } : {},
    ),
  ];
}

// Members of a pair have the argument's name in front of their own.
function valuesOf(stimulus, data) {
  const values = {};
  for (const [key, value] of Object.entries(data)) {
    const [name, member] = key.split('\n');
    const argument = stimulus.arguments.find((one) => one.name === name);
    if (member !== undefined) {
      (values[name] ??= {})[member] = value;
    } else if (argument.many) {
      values[name] = value
        .split('\n')
        .map((line) => line.trim())
        .filter((line) => line !== '');
    } else {
      values[name] =
        argument.kind === 'number' && value !== '' && !Number.isNaN(Number(value)) ? Number(value) : value;
    }
  }
  return values;
}

/** A form for a stimulus, or null when there is none of that name. */
export function formOf(name, label = name, { keep = true } = {}) {
  const stimulus = stimulusNamed(name);
  if (!stimulus) return null;
  const submit = el('button', { class: 'main' }, label);
  return form(
    [...stimulus.arguments.flatMap(fieldsFor), submit],
    async (data, element) => {
      const { done } = await perform(name, [], valuesOf(stimulus, data));
      if (done && !keep) element.reset();
    },
    { 'data-stimulus': name, 'aria-label': `${name}: ${stimulus.help}` },
  );
}

/** A part of a panel, with a heading. */
export const card = (title, ...children) => {
  const parts = children.flat().filter((child) => child !== null && child !== undefined);
  return parts.length > 0 ? el('section', { class: 'card' }, el('h3', {}, title), parts) : null;
};

/** A form in a part of its own; null when the device does not know the stimulus. */
export function cardOf(name, title, label) {
  const made = formOf(name, label ?? title);
  return made && card(title, el('p', {}, stimulusNamed(name).help), made);
}

export const panelOf = (...cards) => el('div', { class: 'panel' }, cards.flat().filter(Boolean));
