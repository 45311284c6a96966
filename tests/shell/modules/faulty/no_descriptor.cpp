// A library that is no plug-in.
