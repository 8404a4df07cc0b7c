// signed-request: asks a server that wants its requests signed as OAuth 1.0 tells (RFC 5849).

// The third word of the launch line is what is asked for, without a query.
var address = instanceName || 'http://127.0.0.1:8080/photos';

// Who asks, and for which user. Names go out with the request, secrets never do: they only sign it.
var consumer = { key: 'dpf43f3p2l4k3l03', secret: 'kd94hf93k423kf44' };
var user = { token: 'nnch734d00sl2jdk', secret: 'pfkkdhi9sl3r4s00' };

// What is asked for.
var query = { file: 'vacation (1).jpg', size: 'original!' };

// Everything but letters, digits and - . _ ~ is escaped; encodeURIComponent leaves five more.
function escaped(text) {
  return encodeURIComponent(text).replace(/[!'()*]/g, function (character) {
    return '%' + character.charCodeAt(0).toString(16).toUpperCase();
  });
}

// The pairs of an object, escaped, in the order of their names.
function pairs(object, quote) {
  return Object.keys(object).sort().map(function (name) {
    return escaped(name) + '=' + quote + escaped(object[name]) + quote;
  });
}

// The text that is signed: the method, the address, and all parameters, those of the query too.
function baseString(method, oauth) {
  var all = Object.assign({}, query, oauth);
  return [method, address, pairs(all, '').join('&')].map(escaped).join('&');
}

// Goes out as a header. A nonce and the time make each request another one.
function authorization(method) {
  var oauth = {
    oauth_consumer_key: consumer.key,
    oauth_nonce: uuid(),
    oauth_signature_method: 'HMAC-SHA1',
    oauth_timestamp: timestamp(),
    oauth_token: user.token,
    oauth_version: '1.0'
  };
  var key = escaped(consumer.secret) + '&' + escaped(user.secret);
  oauth.oauth_signature = signHMACSHA1(baseString(method, oauth), key);
  return 'OAuth ' + pairs(oauth, '"').join(', ');
}

var answer = http.get(address + '?' + pairs(query, '').join('&'), {
  Authorization: authorization('GET')
});
log('the server says: ' + answer);

setTimeout(0, exit);
