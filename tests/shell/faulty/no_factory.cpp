// Exports nothing.
