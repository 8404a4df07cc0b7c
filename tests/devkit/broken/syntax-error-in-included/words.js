var words = {
  hello: 'hello'
  bye: 'goodbye'
};
