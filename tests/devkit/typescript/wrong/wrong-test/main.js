log('hello');
