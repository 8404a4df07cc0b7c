exports.hello = 'hello';
