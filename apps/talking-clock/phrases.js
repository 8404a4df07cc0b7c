// How to tell the time. One function for each language that a device may have.

function twoDigits(number) {
  return (number < 10 ? '0' : '') + number;
}

var phrases = {
  en: function (hours, minutes) { return 'It is ' + hours + ':' + twoDigits(minutes); },
  fr: function (hours, minutes) { return 'Il est ' + hours + ' h ' + twoDigits(minutes); },
  de: function (hours, minutes) { return 'Es ist ' + hours + ' Uhr ' + twoDigits(minutes); }
};
