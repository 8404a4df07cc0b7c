// weather: asks a server on the web for the weather, as JSON text, and tells it in the log.

// The third word of the launch line is where to ask. It may also be the name of a place that the user
// has configured: then config.bin holds it, and `params` has an object of that name with its `url`.
var place = params[instanceName];
var address = place ? place.url : instanceName || 'http://127.0.0.1:8080/weather.json';

// get2 gives the header lines as well, and the status is on the first of them. A server that cannot
// be reached is no exception: its `content` is the text 'curl error'. (`get` gives the content alone.)
function statusOf(answer) {
  return Number(answer.header.split(' ')[1]);
}

// Waits for the answer. Nothing else happens in this application meanwhile.
function askForWeather() {
  var answer = http.get2(address, { Accept: 'application/json' });
  if (answer.content === 'curl error') {
    throw 'no answer from ' + address;
  }
  if (statusOf(answer) !== 200) {
    throw 'the server says ' + statusOf(answer);
  }
  return JSON.parse(answer.content);
}

function degrees(value) {
  return Math.round(value) + ' degrees';
}

function tell(weather) {
  log(weather.place + ': ' + weather.now.sky + ', ' + degrees(weather.now.temperature));
  weather.days.forEach(function (day) {
    log(day.name + ': ' + day.sky + ', from ' + day.low + ' to ' + degrees(day.high));
  });
}

try {
  tell(askForWeather());
} catch (problem) {
  log('no weather today: ' + problem);
}

// That was all. exit() ends a running application, and this one runs when main.js has come to its end.
setTimeout(0, exit);
