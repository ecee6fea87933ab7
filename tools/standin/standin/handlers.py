"""All handlers: to import this module makes the table of commands complete."""

from . import configuration, daemon, decryption, encryption, enrollment, keyserver, tracking  # noqa: F401
