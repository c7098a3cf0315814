"""A simple scanner of C++: the tokens of a source, and where each of them stands.

It leaves out what is never mutated: comments, preprocessor lines, what they reserve for a Mac, and static_assert. It
knows no types and no macros.
"""

import dataclasses
import re

_TOKEN = re.compile(r"""
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>^[ \t]*\#(?:\\\n|[^\n])*)
  | (?P<string>(?:u8|[uUL])?(?:R"(?P<delimiter>[^()\\\s]*)\(.*?\)(?P=delimiter)"|"(?:\\.|[^"\\\n])*")\w*)
  | (?P<char>(?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
  | (?P<number>\.?\d(?:'\w|[eEpP][+-]|[\w.])*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<operator>->\*|<=>|\.\.\.|<<=|>>=|::|->|\+\+|--|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|<<|[-+*/%&|^!~<>=?:;,.(){}\[\]])
""", re.X | re.S | re.M)
_CLOSING = {")": "(", "]": "[", "}": "{"}
_DECLARATIVE = {"namespace", "class", "struct", "union", "enum"}


@dataclasses.dataclass
class Token:
    kind: str
    text: str
    start: int
    line: int
    # The index of the bracket that belongs to this one.
    partner: int = None
    # The index of the innermost bracket that is open here.
    inside: int = None
    # Whether the token is in the body of a function. What is directly in a namespace, a class or an enum is not.
    is_in_body: bool = False

    @property
    def end(self):
        return self.start + len(self.text)


def scan(text):
    """Returns the tokens of this source. A `{` of a body is itself still outside."""
    tokens = _without_assertions(list(_raw(text)))
    open_brackets, is_body = [], {}
    for index, token in enumerate(tokens):
        if token.text in _CLOSING and token.kind == "operator" and open_brackets:
            token.partner = open_brackets.pop()
            tokens[token.partner].partner = index
        token.inside = open_brackets[-1] if open_brackets else None
        token.is_in_body = any(is_body[each] for each in open_brackets)
        if token.kind == "operator" and token.text in "([{":
            is_body[index] = token.text == "{" and not _begins_declarations(tokens, index)
            open_brackets.append(index)
    return tokens


def _raw(text):
    line, counted = 1, 0
    for_mac = []  # for each open #if
    for found in _TOKEN.finditer(text):
        kind = found.lastgroup if found.lastgroup != "delimiter" else "string"
        if kind == "directive":
            _follow(found[0].replace("#", " ").split(), for_mac)
        if kind in ("comment", "directive") or any(for_mac):
            continue
        line += text.count("\n", counted, found.start())
        counted = found.start()
        yield Token(kind, found[0], found.start(), line)


def _follow(words, for_mac):
    """Follows a preprocessor line into a branch or out of it."""
    if words[:1] in (["if"], ["ifdef"], ["ifndef"]):
        for_mac.append(words[1:] in (["defined(__APPLE__)"], ["__APPLE__"]) and words[0] != "ifndef")
    elif words[:1] == ["endif"] and for_mac:
        for_mac.pop()
    elif words[:1] in (["else"], ["elif"]) and for_mac:
        for_mac[-1] = False


def _without_assertions(tokens):
    kept, is_inside = [], False
    for token in tokens:
        is_inside = is_inside or token.text == "static_assert"
        if not is_inside:
            kept.append(token)
        is_inside = is_inside and token.text != ";"
    return kept


def _begins_declarations(tokens, brace):
    """Returns whether this `{` opens a namespace, a class or an enum."""
    index = brace - 1
    while index >= 0 and not (tokens[index].kind == "operator" and tokens[index].text in (";", "{", "}", ")")):
        if tokens[index].text in _DECLARATIVE:
            return True
        index -= 1
    return False
