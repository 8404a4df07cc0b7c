// A long list that keeps up: rows are added once per frame, the oldest go, it can be paused, searched
// and kept as a file, and it says what it leaves out.

import { button, byId, el, setText } from './dom.js';
import { animate, redraw } from './frame.js';

const kMostDrawn = 1000; // rows; the others are kept, and found by a search
const kNearTheEnd = 24; // pixels from the bottom that still count as being there
const kSettling = 4; // frames until rows that came into sight have their height
const kShare = 4; // a list that took a while to draw waits this many times as long

function save(name, text) {
  const link = el('a', {
    download: name,
    href: URL.createObjectURL(new Blob([text], { type: 'text/plain' })),
  });
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 1000);
}

/**
 * `options`: name, label, kept (the rows), make(row) an element, fits(row) whether the filter lets it
 * through, text(row) for a file, tools further elements above the list.
 */
export class List {
  #options;
  #shown = 0; // the serial of the last row that was looked at
  #paused = false;
  #frozen = 0; // the last serial when it was paused
  #rest = 0; // when it may be drawn again
  #later = 0;
  #settling = 0;

  constructor(options) {
    this.#options = options;
    this.search = el('input', {
      type: 'search',
      placeholder: 'Search',
      'aria-label': `Search ${options.label}`,
    });
    this.search.addEventListener('input', () => this.rebuild());
    this.pause = button('Pause', () => this.#togglePause(), { 'aria-pressed': 'false', class: 'small' });
    this.rows = el('div', {
      class: 'list',
      id: options.name,
      role: 'log',
      'aria-live': 'off',
      'aria-label': options.label,
      tabindex: 0,
    });
    this.leftOut = el('p', { class: 'left-out', hidden: true });
    this.panel = el(
      'div',
      { class: 'list-panel' },
      el(
        'div',
        { class: 'tools' },
        this.search,
        options.tools ?? [],
        this.pause,
        button('Clear', () => this.#clear(), { class: 'small' }),
        button('Download', () => this.#download(), { class: 'small' }),
      ),
      this.leftOut,
      this.rows,
    );
    this.draw = () => this.#draw();
  }

  /** Something was added to the rows. Much at once is drawn less often, so that the page stays quick. */
  grown() {
    const wait = this.#rest - performance.now();
    if (this.#later !== 0) return;
    if (wait <= 0) {
      redraw(this.draw);
      return;
    }
    this.#later = setTimeout(() => {
      this.#later = 0;
      redraw(this.draw);
    }, wait);
  }

  /** The filter is another one, or rows have changed. */
  rebuild() {
    this.rows.replaceChildren();
    this.#shown = 0;
    redraw(this.draw);
  }

  wanted() {
    return this.search.value.trim().toLowerCase();
  }

  #fits(row, wanted) {
    if (!this.#options.fits(row)) return false;
    return wanted === '' || this.#options.text(row).toLowerCase().includes(wanted);
  }

  #newRows() {
    const { rows } = this.#options.kept;
    const last = this.#paused ? this.#frozen : Infinity;
    const first = rows.findLastIndex((row) => row.serial <= this.#shown) + 1;
    const wanted = this.wanted();
    const found = rows.slice(first).filter((row) => row.serial <= last && this.#fits(row, wanted));
    if (rows.length > 0) this.#shown = Math.min(rows.at(-1).serial, last);
    return found.slice(-kMostDrawn);
  }

  #draw() {
    const begin = performance.now();
    this.#drawRows();
    this.#rest = performance.now() + kShare * (performance.now() - begin);
  }

  #drawRows() {
    const box = this.rows;
    setText(byId(`count-${this.#options.name}`), this.#options.count?.() ?? '');
    if (this.panel.hidden) return; // drawn when its tab is chosen
    const atEnd = box.scrollHeight - box.scrollTop - box.clientHeight < kNearTheEnd;
    const fragment = document.createDocumentFragment();
    for (const row of this.#newRows()) fragment.append(this.#options.make(row));
    box.append(fragment);
    for (let over = box.childElementCount - kMostDrawn; over > 0; over -= 1) box.firstElementChild.remove();
    if (atEnd) this.#goToEnd();
    this.#tellLeftOut();
  }

  // A row has its height only once it is in sight, so the end moves on for a few frames.
  #goToEnd() {
    this.#settling = kSettling;
    animate(this.#settle);
  }

  #settle = () => {
    this.rows.scrollTop = this.rows.scrollHeight;
    this.#settling -= 1;
    return this.#settling > 0;
  };

  #tellLeftOut() {
    const { kept } = this.#options;
    const parts = [];
    if (this.rows.childElementCount === kMostDrawn)
      parts.push(`the last ${kMostDrawn} are shown, a search finds older ones`);
    if (kept.gone > 0) parts.push(`${kept.gone} older ones are no longer kept`);
    if (kept.missed > 0) parts.push(`${kept.missed} were left out, for this page did not keep up`);
    if (this.#paused && kept.total > this.#frozen)
      parts.push(`${kept.total - this.#frozen} came during the pause`);
    setText(this.leftOut, parts.join('; '));
    this.leftOut.hidden = parts.length === 0;
  }

  #togglePause() {
    this.#paused = !this.#paused;
    this.#frozen = this.#options.kept.total;
    this.pause.setAttribute('aria-pressed', String(this.#paused));
    this.pause.textContent = this.#paused ? 'Go on' : 'Pause';
    redraw(this.draw);
  }

  #clear() {
    this.#options.kept.clear();
    this.#options.cleared?.();
    this.rebuild();
  }

  #download() {
    const wanted = this.wanted();
    const rows = this.#options.kept.rows.filter((row) => this.#fits(row, wanted));
    save(`${this.#options.name}.txt`, rows.map((row) => `${this.#options.text(row)}\n`).join(''));
  }
}
