include('a.js');
