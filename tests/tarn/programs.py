"""The programs under test, which environment variables name."""
import os
import sys
import unittest


def run_tests(*variables):
    """Runs the main module's tests, with the paths of the programs made absolute."""
    missing = [name for name in variables if not os.path.isfile(os.environ.get(name, ""))]
    if missing:
        sys.exit(f"set {' and '.join(missing)} to the program's path")
    for name in variables:
        os.environ[name] = os.path.abspath(os.environ[name])
    unittest.main(verbosity=2)
