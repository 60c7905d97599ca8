"""The lines of a C++ source that are executed, and how each can be changed a little.

Reads the source as it stands in this project: no macros that open blocks, one statement a line.
"""

import bisect
import re

TEXTS = re.compile(r"""//[^\n]*|/\*.*?\*/              # comments
                       |^[ ]*\#(?:[^\n]*\\\n)*[^\n]*  # directives
                       |"(?:\\.|[^"\\\n])*"|(?<!\w)'(?:\\.|[^'\\])'""", re.M | re.S | re.X)


def without_texts(source):
    """The source with blanks for comments, directives and what is quoted: each place stays."""
    return TEXTS.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), source)


CONTROL = re.compile(r"\s*(?:else\s+)?(if|for|while|switch|catch)\b")
LAMBDA = re.compile(r"\[[^\[\]]*\]\s*(?:\([^{}]*\))?\s*(?:mutable|noexcept|\s)*(?:->[^{}();=]*)?$")
TYPE = re.compile(r"\s*(?:template\s*<.*>\s*)?(struct|class|union|enum)\b", re.DOTALL)
NOT_RUN = re.compile(r"\s*(?:using|typedef|static_assert|friend|extern|template|namespace)\b")
DECLARATION = re.compile(r"\s*(?!return\b|throw\b|delete\b|goto\b|else\b)(?:[\w:]|<[^;()=]*>)+"
                         r"[\s*&]+(?:const\s+)?\w+(?:\[[^\]]*\])*(?:,\s*[*&]*\w+)*;$")
LABELS = re.compile(r"(?:\s|public:|private:|protected:|default:|case [^:]*:(?!:))*")
HAS_VALUE = re.compile(r"=(?!\s*(?:default|delete|0)\s*;)|\}\s*;")
# What stands before the type that a function returns.
BEFORE_RESULT = re.compile(r"template\s*<[^{}()]*>|\[\[.*?\]\]|public:|private:|protected:|\b(?:"
                           r"static|inline|constexpr|virtual|explicit|FRAMEQUILT_ROUTINE|const)\b")
# The end of what stands before a function's body.
SIGNATURE = re.compile(r"[)}]\s*(?:(?:const|noexcept|override|final)\s*)*(?:->[^()]*)?$")
NUMBER_TYPE = re.compile(r"(?:int|float|double|long|unsigned|Bytes?|"
                         r"std::(?:size_t|ptrdiff_t|u?int\d+_t))\b")


class Code:
    """What of a source file is executed: spans of text, and the statements that end in them."""

    def __init__(self, source):
        self.text = without_texts(source)
        self.spans = []
        self.statements = []  # (begin, end, what the function around it returns)
        self._read()

    def _kind(self, head, inside, depth):
        if LAMBDA.search(head):
            return "lambda"
        if inside in ("function", "lambda", "block"):
            if depth == 0 and (CONTROL.match(head) or head.strip() in ("", "else", "do", "try")):
                return "block"
            if depth == 0 and TYPE.match(head):
                return "type"
            return "initializer"
        if re.match(r"\s*(?:inline\s+)?namespace\b|\s*extern\s*$", head):
            return "namespace"
        if depth == 0 and TYPE.match(head) and not re.search(r"\)\s*(?:const|noexcept|\s)*$", head):
            return "enum" if TYPE.match(head).group(1) == "enum" else "type"
        is_body = inside != "enum" and depth == 0 and ")" in head and SIGNATURE.search(head)
        return "function" if is_body else "initializer"

    def _add(self, begin, end, returns=None):
        while begin < end and self.text[begin].isspace():
            begin += 1
        if begin < end:
            self.spans.append((begin, end))
            if returns is not None:
                self.statements.append((begin, end, returns))

    def _read(self):
        text, begin, depth = self.text, 0, 0
        # Kind; depth before; what the function returns; where the statement began that goes on.
        around = [("namespace", 0, "", None)]
        for i, sign in enumerate(text):
            kind, _, returns, _ = around[-1]
            runs = kind in ("function", "lambda", "block")
            if sign in "([":
                depth += 1
            elif sign in ")]":
                depth -= 1
            elif sign == "{":
                head = text[begin:i]
                inner = self._kind(head, kind, depth)
                if inner == "function":
                    constructor = re.search(r"\)\s*(?:noexcept\s*)?:(?!:)", head)
                    if constructor:
                        self._add(begin + constructor.end(), i)
                    returns = BEFORE_RESULT.sub(" ", head).strip()
                elif inner == "lambda":
                    self._add(begin, i)
                    result = re.search(r"->\s*([\w:]+)\s*$", head)
                    returns = result.group(1) if result else ""
                elif inner == "block" and "(" in head:
                    self._add(begin, i)
                around.append((inner, depth, returns, begin if inner == "initializer" else None))
                begin, depth = begin if inner == "initializer" else i + 1, 0
            elif sign == "}":
                _, depth, _, goes_on = around.pop()
                begin = i + 1 if goes_on is None else goes_on
            elif sign == ";" and depth == 0:
                start = LABELS.match(text, begin, i + 1).end()
                statement = text[start : i + 1]
                if not NOT_RUN.match(statement) and re.search(r"\w", statement):
                    if runs and not DECLARATION.match(statement):
                        self._add(start, i + 1, returns)
                    elif not runs and HAS_VALUE.search(statement) and "operator" not in statement:
                        self._add(start, i + 1)
                begin = i + 1


def neighbours(text):
    number, rest = re.match(r"(\d+)(.*)", text).groups()
    return [str(int(number) + step) + rest for step in (1, -1) if int(number) + step >= 0]


SWAPS = (
    (r" < ", " <= "), (r" <= ", " < "), (r" > ", " >= "), (r" >= ", " > "),
    (r" == ", " != "), (r" != ", " == "), (r" && ", " || "), (r" \|\| ", " && "),
    (r"(?<=[\w)\]]) \+ ", " - "), (r"(?<=[\w)\]]) - ", " + "), (r"(?<=[\w)\]]) \* ", " / "),
    (r"(?<=[\w)\]]) / ", " * "), (r" \+= ", " -= "), (r" -= ", " += "),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"),
)
NUMBER = re.compile(r"(?<![\w.'])\d+(?:\.\d*)?[uUlLzZfF]*(?![\w.'])")
CALL_OR_ASSIGNMENT = re.compile(r"""
    (?:\+\+|--|\*)?
    (?:[\w:]+(?:\.|->|::)|[\w:]+\[[^\]]*\](?:\.|->)?|[\w:]+\([^()]*\)(?:\.|->))*  # of what
    (?:\w+(?:\[[^=;]*\])*\s*(?:[-+*/|&^]|<<|>>)?=[^=].*|\w+\(.*\)|\w+\+\+|(?<=\+\+)\w+|(?<=--)\w+);$
    """, re.X)
PREFIX = re.compile(r"\s*(?:else\s+(?!if)|(?:else\s+)?(?:if|for|while)\s*(?:constexpr\s*)?(?=\())")


def closing(text, opening):
    depth = 0
    for i in range(opening, len(text)):
        depth += {"(": 1, ")": -1}.get(text[i], 0)
        if depth == 0:
            return i
    return -1


def unconditional(statement):
    """Where the part of a statement begins that stands behind `if (...)`, `else` or `for (...)`."""
    place = 0
    while match := PREFIX.match(statement, place):
        place = match.end()
        if statement[place] == "(":
            place = closing(statement, place) + 1
            if place == 0:
                return len(statement)
    return place + len(statement[place:]) - len(statement[place:].lstrip())


def changes_of(code, begin, end):
    """The changes of the line at those places, as (place, end, new text)."""
    line = code.text[begin:end]

    def inside(place):
        return any(a <= begin + place < b for a, b in code.spans)

    for pattern, new in SWAPS:
        for match in re.finditer(pattern, line):
            if inside(match.start()):
                yield match.start(), match.end(), new
    for match in NUMBER.finditer(line):
        if inside(match.start()):
            for new in neighbours(match.group()):
                yield match.start(), match.end(), new
    for match in re.finditer(r"\bif (?:constexpr )?\(", line):
        last = closing(line, match.end() - 1)
        condition = line[match.end() : last]
        if last > 0 and inside(match.start()) and not re.search(r";|[^=!<>]=[^=]", condition):
            yield match.end(), last, f"!({condition})"
    for a, b, returns in code.statements:
        if a < begin or b > end:
            continue
        statement = code.text[a:b]
        place = unconditional(statement)
        rest = statement[place:]
        start = a - begin + place
        if CALL_OR_ASSIGNMENT.match(rest) and not rest.startswith(("return", "throw")):
            yield start, b - begin, ";"
        result = re.match(r"return (.+);$", rest)
        if result and not re.fullmatch(r"true|false|\d+", result.group(1)):
            if re.match(r"bool\b", returns):
                yield start, b - begin, f"return !({result.group(1)});"
            elif NUMBER_TYPE.match(returns):
                yield start, b - begin, f"return ({result.group(1)}) + 1;"


def lines_of(path):
    """The executable lines of a C++ source: (number, text, changed texts)."""
    source = path.read_text()
    code = Code(source)
    begins = [0] + [match.end() for match in re.finditer(r"\n", source)]
    numbers = set()
    for a, b in code.spans:
        first, last = (bisect.bisect_right(begins, place) for place in (a, b - 1))
        numbers.update(range(first - 1, last))
    for number in sorted(numbers):
        begin = begins[number]
        end = source.index("\n", begin)
        if not re.search(r"\w", code.text[begin:end]):
            continue
        line = source[begin:end]
        changed = []
        for a, b, new in changes_of(code, begin, end):
            # What is quoted was blanked for the search only.
            if new != ";" and code.text[begin + a : begin + b] != line[a:b]:
                continue
            text = line[:a] + new + line[b:]
            if text not in changed:
                changed.append(text)
        yield number, line, changed
