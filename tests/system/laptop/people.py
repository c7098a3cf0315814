"""The people who use the laptop."""

import collections
import pathlib

Person = collections.namedtuple("Person", "name uid home")

ANNA = Person("anna", 2001, pathlib.Path("/home/anna"))
BORIS = Person("boris", 2002, pathlib.Path("/home/boris"))
# The one as whom the login screen runs.
GREETER = Person("greeter", 2003, pathlib.Path("/home/greeter"))
EVERYBODY = [ANNA, BORIS, GREETER]
