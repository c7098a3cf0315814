"""The mutations of C++. Each looks at the tokens of a source and yields changes: kind, start, end, new text.

They know no types, so some mutants do not compile. Those do not count.
"""

import re

from mutant import make
from scanner import scan

_SWAPPED = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&", "+": "-",
            "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+=", "++": "--", "--": "++"}
# Written with a space on each side, these compare, calculate or combine. Without, they belong to templates, pointers
# and references.
_SPACED = {"<", ">", "+", "-", "*", "/", "&&"}
_HEADS = {"if", "while", "for", "switch"}
# A statement that begins with one of these is a declaration, has a body, or may not be missing.
_KEPT = {"alignas", "auto", "bool", "break", "case", "catch", "char", "class", "const", "constexpr", "default", "do",
         "double", "else", "enum", "extern", "float", "for", "friend", "goto", "if", "int", "long", "namespace",
         "private", "protected", "public", "short", "static", "struct", "switch", "template", "thread_local", "try",
         "typedef", "typename", "union", "unsigned", "using", "void", "while"}
_DECLARATION = re.compile(r"[\w:]+(<.*>)?[\s&*]+(?<=[\s&*])\w+\s*([=;({\[]|$)")
_ERROR = re.compile(r"< 0\b|<= 0\b|[!=]= -1\b|!= 0\b|== nullptr|\berr(no|or)\b|^!")


def mutants_of(file, source):
    """Returns the mutants of this C++ source, in the order of their places, without duplicates."""
    tokens = scan(source)
    found = {}
    for mutation in (conditions, operators, statements, constants, arguments, checks):
        for kind, start, end, text in mutation(source, tokens):
            mutant = make(file, source, kind, start, end, text)
            found.setdefault(mutant.planted_in(source), mutant)
    return sorted(found.values(), key=lambda each: (each.start, each.end, each.text))


def conditions(source, tokens):
    """Negates conditions, and makes branches that are never taken."""
    for index, token in enumerate(tokens):
        if token.text in ("if", "while") and index + 1 < len(tokens) and tokens[index + 1].text == "(":
            yield from _condition(source, tokens, index + 1)
        elif token.text == "?" and token.is_in_body:
            begin = _begin_of_choice(tokens, index)
            condition = source[tokens[begin].start:tokens[index - 1].end]
            yield "condition negated", tokens[begin].start, tokens[index - 1].end, _negated(condition)


def _condition(source, tokens, head):
    close = tokens[head].partner
    if close is None or close == head + 1:
        return
    own = [index for index in range(head + 1, close) if tokens[index].inside == head]
    parts = [index for index in own if tokens[index].text == ";"]
    begin = parts[-1] + 1 if parts else head + 1
    start, end = tokens[begin].start, tokens[close - 1].end
    assigned = [index for index in own if tokens[index].text == "=" and index > begin]
    if not assigned:
        condition = source[start:end]
        if [tokens[index].text in ("==", "!=") for index in own if index >= begin].count(True) != 1 or \
                any(tokens[index].text in ("&&", "||") for index in own):  # otherwise operators() yields the same
            yield "condition negated", start, end, _negated(condition)
        if _ERROR.search(condition):
            yield "error result ignored", start, end, f"({condition}) && false"
        else:
            yield "branch never taken", start, end, f"false && ({condition})"
    elif not parts and tokens[assigned[0] - 1].kind == "name":  # if (const auto name = ...)
        yield "condition negated", end, end, f"; !{tokens[assigned[0] - 1].text}"
        yield "branch never taken", end, end, "; false"


def _negated(condition):
    if re.fullmatch(r"![\w.:>\[\]-]+(\([^()]*\))?", condition):
        return condition[1:]
    return f"!({condition})"


def _begin_of_choice(tokens, question):
    """Returns the index of the first token of the condition before this question mark."""
    index = question - 1
    while index >= 0:
        token = tokens[index]
        if token.kind == "operator" and token.text in ")]}" and token.partner is not None:
            index = token.partner - 1
            continue
        if token.text in ("=", "return", "(", "[", "{", ",", ";", "?", ":", "+=", "<<"):
            break
        index -= 1
    return index + 1


def operators(source, tokens):
    """Replaces an operator by its neighbor, and leaves out negations inside conditions."""
    for index, token in enumerate(tokens):
        if token.kind != "operator" or not token.is_in_body or tokens[index - 1].text == "operator":
            continue
        if token.text == "+" and "string" in (tokens[index - 1].kind, tokens[index + 1].kind):
            continue  # texts cannot be subtracted
        is_spaced = source[token.start - 1].isspace() and source[token.end:token.end + 1].isspace()
        if token.text in _SWAPPED and (is_spaced or token.text not in _SPACED):
            yield "operator replaced", token.start, token.end, _SWAPPED[token.text]
        elif token.text == "!":
            yield "condition negated", token.start, token.end, ""


def statements(source, tokens):
    """Removes statements, and swaps adjacent ones. A statement is on one line and no declaration."""
    previous = None
    for index in range(len(tokens)):
        end = _end_of_statement(source, tokens, index)
        if end is None:
            continue
        start, stop = tokens[index].start, tokens[end].end
        is_branch = tokens[index - 1].text == ")" and tokens[tokens[index - 1].partner - 1].text == "if"
        returns_value = tokens[index].text == "return" and end > index + 1
        if not returns_value and not is_branch:  # conditions() leaves out the branch
            yield "statement removed", start, stop, ";"
        is_jump = tokens[index].text in ("return", "continue", "throw")
        stands_alone = tokens[index - 1].text in (";", "{", "}")
        if previous and previous[1] == index - 1 and stands_alone and not is_jump:
            first, middle = tokens[previous[0]].start, tokens[previous[1]].end
            swapped = source[start:stop] + source[middle:start] + source[first:middle]
            if source[start:stop] != source[first:middle]:
                yield "statements swapped", first, stop, swapped
        previous = (index, end) if stands_alone and not is_jump else None


def _end_of_statement(source, tokens, index):
    """Returns the index of the semicolon, if a statement that can be removed begins here."""
    token = tokens[index]
    if not token.is_in_body or index == 0 or token.inside is None or tokens[token.inside].text != "{":
        return None
    before = tokens[index - 1]
    follows_head = before.text == ")" and before.partner and tokens[before.partner - 1].text in _HEADS
    follows_label = before.text == ":" and tokens[index - 2].text == "default" or _is_case(tokens, index - 1)
    if not (before.text in (";", "{", "}", "else", "do") or follows_head or follows_label):
        return None
    if token.text in _KEPT - {"break"} or not (token.kind == "name" or token.text in ("++", "--", "*", "::", "(")):
        return None
    end = index
    while end < len(tokens) and not (tokens[end].text == ";" and tokens[end].inside == token.inside):
        if tokens[end].line != token.line or tokens[end].text == "}" and tokens[end].partner < index:
            return None
        end += 1
    if end == len(tokens) or tokens[end].line != token.line:
        return None
    text = source[token.start:tokens[end].end]
    if token.text not in ("return", "throw", "delete", "continue", "break") and _DECLARATION.match(text):
        return None
    return end


def _is_case(tokens, colon):
    index = colon - 1
    while tokens[colon].text == ":" and index > 0 and tokens[index].line == tokens[colon].line:
        if tokens[index].text in ("case", "?"):
            return tokens[index].text == "case"
        index -= 1
    return False


def constants(source, tokens):
    """Changes numbers and truth values, and leaves one flag out of several."""
    for index, token in enumerate(tokens):
        before = tokens[index - 1] if index > 0 else token
        is_pure = before.text == "=" and tokens[index - 2].text in (")", "const", "override")
        is_edge = token.text == "0" and before.text in ("<", ">=")  # operators() yields the same
        if token.kind == "number" and not is_pure and not is_edge:
            for text in _other_numbers(token.text):
                yield "constant changed", token.start, token.end, text
        elif token.text in ("true", "false") and token.kind == "name":
            yield "constant changed", token.start, token.end, "false" if token.text == "true" else "true"
        elif re.fullmatch(r"[A-Z][A-Z0-9_]+", token.text) and before.text == "|" and source[before.start - 1] == " ":
            yield "constant changed", before.start - 1, token.end, ""


def _other_numbers(text):
    """Returns a larger and, if there is one, a smaller number of the same form."""
    digits, suffix = re.fullmatch(r"(0[xX][\da-fA-F']+|[\d.']+)(.*)", text, re.S).groups()
    if not re.fullmatch(r"\d+", digits):
        try:
            return [f"{float(digits) * 2}{suffix}"]
        except ValueError:
            return [f"({text} + 1)"]
    if digits.startswith("0") and len(digits) > 1:
        return [f"({text} + 1)"]
    number = int(digits)
    if number == 0:
        return [f"1{suffix}"]
    return [f"{number * 2}{suffix}", f"{0 if number == 1 else 1}{suffix}"]


# A call whose result does not depend on the order of its arguments.
_SYMMETRIC = re.compile(r"\bstd::(min|max)(<[^<>()]*>)?$")


def arguments(source, tokens):
    """Swaps adjacent arguments of a call, unless their order does not matter."""
    for index, token in enumerate(tokens):
        if token.text != "(" or token.partner is None or index == 0 or not token.is_in_body:
            continue
        before = tokens[index - 1]
        if before.kind != "name" and before.text != ">" or before.text in (*_HEADS, "catch"):
            continue
        if _SYMMETRIC.search(source, max(0, token.start - 100), token.start):
            continue
        inner = range(index + 1, token.partner)
        commas = [each for each in inner if tokens[each].inside == index and tokens[each].text == ","]
        edges = [index, *commas, token.partner]
        parts = [(tokens[left + 1].start, tokens[right - 1].end) for left, right in zip(edges, edges[1:])]
        for (start, middle), (other, end) in zip(parts, parts[1:]):
            one, two = source[start:middle], source[other:end]
            if one != two and "{" not in one + two and "\n" not in source[start:end]:
                yield "arguments swapped", start, end, two + source[middle:other] + one


def checks(source, tokens):
    """Ignores what a call reports, where only a check of the result looks at it: check(call(), "what")."""
    for index, token in enumerate(tokens):
        if token.text != "check" or not token.is_in_body or index + 1 >= len(tokens) or tokens[index + 1].text != "(":
            continue
        close = tokens[index + 1].partner
        commas = [each for each in range(index + 2, close)
                  if tokens[each].inside == index + 1 and tokens[each].text == ","]
        if commas:
            call = source[tokens[index + 2].start:tokens[commas[-1] - 1].end]
            yield "error result ignored", token.start, tokens[close].end, f"static_cast<void>({call})"
