var hello = 'hello';
