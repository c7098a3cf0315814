"""The user accounts of the laptop."""

import collections
import pathlib

HOMES = pathlib.Path("/home")

Person = collections.namedtuple("Person", "name uid home")

ANNA = Person("anna", 2001, HOMES / "anna")
BORIS = Person("boris", 2002, HOMES / "boris")
# The user account that the login screen runs as.
GREETER = Person("greeter", 2003, HOMES / "greeter")
EVERYBODY = [ANNA, BORIS, GREETER]
