// expect(value).toBe(...) and the like.

function expectationOf(value, negated) {
  // `holds` against what is wanted; the sentence stands in the result when it does not.
  function check(holds, sentence, place, expected, actual) {
    if (holds !== negated) return;
    const wanted = negated ? 'not expected: it ' + sentence : 'expected: it ' + sentence;
    throw new Failure(wanted, place, negated ? {} : { difference: difference(expected, actual) });
  }

  // Of the device, what it shows is waited for; what it does not show, it does not show now.
  async function show(pattern, options, place) {
    const fits = () => matches(view, pattern) || undefined;
    if (negated) {
      await ask({ do: 'step', until: now, place });
      return check(fits() === true, 'shows ' + shown(pattern), place);
    }
    await untilFound('the device shows what is expected', fits, place, options.within, undefined,
                     () => ({ difference: difference(pattern, part(view, pattern)) }));
  }

  function caught(action) {
    try {
      action();
    } catch (error) {
      return { error };
    }
    return {};
  }

  function checkThrown(outcome, pattern, place) {
    const text = 'error' in outcome ? String(isObject(outcome.error) ? outcome.error.message :
                                                                       outcome.error) : undefined;
    check(text !== undefined && hasText(pattern)(text), 'throws', place, pattern, text);
  }

  return {
    toBe(expected) {
      check(Object.is(value, expected), 'is ' + shown(expected), placeOfCaller(), expected, value);
    },
    toEqual(expected) {
      check(equals(value, expected), 'equals ' + shown(expected), placeOfCaller(), expected, value);
    },
    toMatch(pattern) {
      const holds = typeof pattern === 'string' ? String(value).includes(pattern) :
                                                  matches(value, pattern);
      check(holds, 'matches ' + shown(pattern), placeOfCaller(), pattern, part(value, pattern));
    },
    toContain(item) {
      const holds = typeof value === 'string' ? value.includes(item) :
                                                Array.from(value).some((one) => equals(one, item));
      check(holds, 'contains ' + shown(item), placeOfCaller(), item, value);
    },
    toThrow(pattern) {
      const place = placeOfCaller();
      if (typeof value === 'function') return checkThrown(caught(value), pattern, place);
      return waiting(place, Promise.resolve(value).then(
          () => checkThrown({}, pattern, place), (error) => checkThrown({ error }, pattern, place)));
    },
    toShow(pattern, options = {}) {
      const place = placeOfCaller();
      if (value !== deviceOfTest) {
        throw new Failure('toShow is for the device: expect(device).toShow({...})', place);
      }
      return waiting(place, show(pattern, options, place));
    }
  };
}

function expect(value) {
  return Object.assign(expectationOf(value, false), { not: expectationOf(value, true) });
}
