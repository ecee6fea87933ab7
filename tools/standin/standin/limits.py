"""How much the daemon takes and passes on, in bytes where nothing else is said.

Callers copy replies into buffers and into a log of 32 KiB: the larger a reply may be, the larger these have to be.
"""

TEXT = 8_000  # where nothing else is said
PASSWORD = 511
ADDRESS = 320
RECIPIENTS = 200  # of a message
SUBJECT = 1_000
STATUS_MESSAGE = 1_000
CONFIGURATION = 8_000  # of a message, as a map on the wire
CONFIGURATION_FILE = 1 << 20
CONFIGURATION_LINE = 1_000
PROBLEMS = 50  # that a check names one by one
REQUEST = 256 << 20
PARAMETERS = 100_000  # of a request
MAP_ENTRIES = 100_000
NESTING = 100  # multiparts within each other
HEADER = 1 << 17  # of a MIME message or of one of its parts: a hostile one takes long to read
CONNECTIONS = 64
