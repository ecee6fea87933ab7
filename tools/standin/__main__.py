"""Starts the stand-in daemon: what the program file tarn-standin runs."""

import signal
import sys

signal.signal(signal.SIGINT, signal.SIG_DFL)  # an interruption is no error to be told, not even here

from standin.cli import main  # noqa: E402

sys.exit(main())
