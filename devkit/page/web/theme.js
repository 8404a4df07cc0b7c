// Light, dark, or as the system has it. Remembered by the browser.

import { byId } from './dom.js';
import { keep, recall } from './memory.js';

const kThemes = ['system', 'light', 'dark'];
const kWords = { system: 'as the system', light: 'light', dark: 'dark' };
const kPlace = 'desk-colours';

function show(theme) {
  if (theme === 'system') {
    delete document.documentElement.dataset.theme;
  } else {
    document.documentElement.dataset.theme = theme;
  }
  byId('theme').textContent = `Colours: ${kWords[theme]}`;
}

export function startTheme() {
  let theme = kThemes.includes(recall(kPlace)) ? recall(kPlace) : 'system';
  show(theme);
  byId('theme').addEventListener('click', () => {
    theme = kThemes[(kThemes.indexOf(theme) + 1) % kThemes.length];
    keep(kPlace, theme);
    show(theme);
  });
}
