// What the browser remembers for this page. One that may not remember loses nothing else.

/** The text that was kept at a place, or null. */
export function recall(place, storage = 'localStorage') {
  try {
    return window[storage].getItem(place);
  } catch {
    return null;
  }
}

export function keep(place, text, storage = 'localStorage') {
  try {
    window[storage].setItem(place, text);
  } catch {
    // Then it is chosen anew next time.
  }
}
