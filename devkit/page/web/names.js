// Applications by number, name and colour.

const kHues = 6;
const kMostNames = 1000;
const hues = new Map();

const names = new Map(); // by number; an application that has left keeps its name

/** Keeps the names that go with numbers, which no other application ever gets. */
export function rememberNames(applications) {
  if (names.size > kMostNames) names.clear();
  for (const { number, name } of applications) if (name && number !== null) names.set(number, name);
}

/** An event tells the name of its application, which may have left before this page came. */
export function rememberName({ application, applicationName }) {
  if (applicationName) rememberNames([{ number: application, name: applicationName }]);
}

/** Numbers begin anew with another tool. */
export const forgetNames = () => names.clear();

export const nameOf = (number) => names.get(number) ?? `app ${number}`;

/** A small number that stands for the colour of a name, in the order in which names appear. */
export function hueOf(name) {
  if (hues.size > kMostNames) hues.clear();
  if (!hues.has(name)) hues.set(name, hues.size % kHues);
  return hues.get(name);
}
