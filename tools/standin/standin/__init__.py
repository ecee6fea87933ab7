"""A stand-in for the secure-mail daemon and its key server, for development and demonstration. It encrypts nothing."""
