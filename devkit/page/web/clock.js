// The device's clock, in milliseconds since 1970, as far as frames from the server tell it. It never
// goes back, so it need not be that of the browser.

let ahead = 0;
let known = false;

/** The clock of a new connection has nothing to do with that of the one before. */
export function forgetClock() {
  known = false;
}

/** A frame left the server at `now`. The one that travelled fastest tells best. */
export function hearClock(now) {
  if (!Number.isFinite(now)) return;
  const difference = now - performance.now();
  if (!known || difference > ahead) ahead = difference;
  known = true;
}

export const deviceNow = () => performance.now() + ahead;

const two = (number) => String(number).padStart(2, '0');

/** A time, in milliseconds since 1970, as the time of day. */
export function timeOfDay(time) {
  if (!Number.isFinite(time)) return String(time ?? '');
  const date = new Date(time);
  return (
    `${two(date.getHours())}:${two(date.getMinutes())}:${two(date.getSeconds())}` +
    `.${String(date.getMilliseconds()).padStart(3, '0')}`
  );
}

/** A length of time, short. */
export function lengthOf(milliseconds) {
  if (milliseconds > -1 && milliseconds < 1) return '< 1 ms';
  if (milliseconds < 1000) return `${Math.round(milliseconds)} ms`;
  if (milliseconds < 60000) return `${(milliseconds / 1000).toFixed(1)} s`;
  return `${Math.floor(milliseconds / 60000)} min ${Math.round((milliseconds % 60000) / 1000)} s`;
}
