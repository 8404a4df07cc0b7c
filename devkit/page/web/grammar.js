// What a grammar offers to say, as far as it can be told: alternatives with bars between them, the
// items of an XML grammar, or the alternatives of a rule.

const kMostChoices = 24;

function itemsOf(grammar) {
  const xml = new DOMParser().parseFromString(grammar, 'application/xml');
  if (xml.querySelector('parsererror')) return [];
  const items = [...xml.querySelectorAll('item')].filter((item) => !item.querySelector('item'));
  return items.map((item) => {
    for (const tag of item.querySelectorAll('tag')) tag.remove();
    return item.textContent;
  });
}

function alternativesOf(grammar) {
  const rules = [...grammar.matchAll(/=([^;]*);/g)].map((rule) => rule[1]);
  return (rules.length > 0 ? rules : [grammar])
    .join('|')
    .split('|')
    .map((text) => text.replace(/\{[^}]*\}|<[^>]*>|[()[\]]/g, ' '));
}

const kLongestPhrase = 60; // letters of a text without alternatives that may still be meant as it is

/** The phrases that a grammar offers; none when it has no alternatives. */
export function choicesOf(grammar) {
  const text = String(grammar ?? '').trim();
  const found = text.startsWith('<') ? itemsOf(text) : alternativesOf(text);
  const phrases = found.map((phrase) => phrase.replace(/\s+/g, ' ').trim()).filter((phrase) => phrase !== '');
  if (phrases.length === 1 && phrases[0].length > kLongestPhrase) return [];
  return [...new Set(phrases)].slice(0, kMostChoices);
}
