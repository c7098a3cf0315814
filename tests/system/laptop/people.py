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

# Boris administers the laptop. He is asked for this password when somebody needs his rights. Nobody needs a password to
# log in.
ADMINISTRATOR, PASSWORD = BORIS, "trackpad"
# The same as crypt(3) stores it, by SHA-512.
STORED_PASSWORD = ("$6$kovra$2ATgN9Z9mARRD1rXdVuwEwt5uCen81Ocl4QiaQ9vkL4zF3whQTgI3qwM47xq2Rzcx5OhepcOOOsmf0WT0cgyo0")
