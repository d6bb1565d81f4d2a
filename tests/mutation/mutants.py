"""Finds the mutants of a C++ source, and writes the source with all mutants in it. A mutant is one small change of the
code. The program that is built from this source makes only the change whose number is switched on (chosen_mutant.h).

This module reads tokens, not syntax. An operator between blanks is binary, because clang-format writes it so. Its
operands reach to the next operator with a lower precedence. The caller leaves out mutants that don't compile.
"""
import bisect
import dataclasses
import re

TOKEN = re.compile(r"""
    (?P<skip>\s+|//[^\n]*|/\*.*?\*/|^[ \t]*\#(?:[^\n\\]|\\.)*)
  | (?:u8|u|U|L)?(?:R"(?P<end>[^(]*)\(.*?\)(?P=end)"|"(?:[^"\\\n]|\\.)*"|'(?:[^'\\\n]|\\.)+')
  | \d(?:'?[\w.])* | \w+ | <<=|>>=|<=>|->|::|\+\+|--|&&|\|\||[-+*/%&|^<>=!]=|<<|>>|.
""", re.X | re.S | re.M)
LEVELS = ["= += -= *= /= %= &= |= ^= <<= >>=", "?", "||", "&&", "|", "^", "&", "== !=", "< <= > >=", "<< >>", "+ -", "* / %"]
BINDS = {operator: level for level, operators in enumerate(LEVELS) for operator in operators.split()}
COMPARISONS = {"==": ["!="], "!=": ["=="], "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"]}
SWAPS = {"&&": "||", "||": "&&", "+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "&": "|", "|": "&", "^": "|",
         "<<": ">>", ">>": "<<", "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|=", "^=": "|="}
WORDS = {"true": "false", "false": "true", "TRUE": "FALSE", "FALSE": "TRUE"}
NUMBER = re.compile(r"(0[xX][\da-fA-F']+|[\d']+)([uUlLzZ]*)")
OPENING, CLOSING = {"(", "[", "{"}, {")", "]", "}"}
STOPS = {"return", "case", "else", "do", "throw", ";", ",", ":", "?"}  # an operand ends before these
HEADS = {"if", "while", "for", "switch"}
NOTHING = {"", "{}", "0", "false", "FALSE", "nullptr", "std::nullopt"}  # a mutant `return {}` would return the same
# DROPPABLE matches a call, an assignment or an increment, but no declaration.
KEYWORDS = "return|if|else|while|for|switch|do|throw|using|case|delete|static_assert"
DROPPABLE = re.compile(rf"(?:\(void\)\s*)?(?:\+\+|--|(?!(?:{KEYWORDS})\b)"
                       r"[*:\w][\w:]*(?:(?:\.|->)\w+|\[[^\]]*\]|\(\))*\s*(?:\(|[-+|&^*/]?=(?!=)|<<=|>>=|\+\+|--))")


@dataclasses.dataclass
class Mutant:
    file: str
    start: int  # offsets in the text
    end: int
    text: str  # the replacement
    # One of these kinds of code:
    # - truth: a comparison or a negation. One of its mutants is its opposite.
    # - condition: the condition of an if, while or ?. It can have any type that converts to bool.
    # - declaration: a condition that declares a variable
    # - statement
    # - value: any other expression
    kind: str
    line: int = 0
    shown: str = ""
    number: int = 0


class Source:
    def __init__(self, file, text):
        self.file, self.text = file, text
        self.tokens = [token for token in TOKEN.finditer(text) if token["skip"] is None]
        self.words = [token.group() for token in self.tokens]
        self.pair, stack = {}, []
        for i, word in enumerate(self.words):
            if word in OPENING:
                stack.append(i)
            elif word in CLOSING:
                self.pair[i] = stack.pop()
                self.pair[self.pair[i]] = i

    def is_binary(self, i):
        token = self.tokens[i]
        return self.words[i] in BINDS and self.text[token.start() - 1].isspace() and self.text[token.end()].isspace()

    def opens_code(self, i):
        """Returns whether the brace opens a function, a lambda or a block, rather than a type, a namespace or a
        list."""
        return self.words[i - 1] in (")", "]", "else", "do", "try", "noexcept", "override", "const", ";", "}")

    def closes_head(self, i):
        return self.words[i] == ")" and self.words[self.pair[i] - 1] in HEADS

    def operand_start(self, i, level):
        while i > 0:
            word = self.words[i - 1]
            if word in OPENING or word in STOPS or self.is_binary(i - 1) and BINDS[word] < level or self.closes_head(i - 1):
                break
            if word == "}" and self.opens_code(self.pair[i - 1]):
                break
            i = self.pair.get(i - 1, i - 1)
        return i

    def operand_end(self, i, level):
        while self.words[i + 1] not in CLOSING and self.words[i + 1] not in STOPS:
            if self.is_binary(i + 1) and BINDS[self.words[i + 1]] <= level:
                break
            i = self.pair.get(i + 1, i + 1)
        return i

    def at(self, first, last):
        return self.text[self.tokens[first].start():self.tokens[last].end()]

    def mutant(self, first, last, text, kind="value"):
        return Mutant(self.file, self.tokens[first].start(), self.tokens[last].end(), text, kind)

    def operator(self, i):
        word, level = self.words[i], BINDS[self.words[i]]
        first, last = self.operand_start(i, level), self.operand_end(i, level)
        if word == "?":
            yield self.mutant(first, i - 1, f"!({self.at(first, i - 1)})", "condition")
        for other in COMPARISONS.get(word, [SWAPS[word]] if word in SWAPS else []):
            yield self.mutant(first, last, f"{self.at(first, i - 1)} {other} {self.at(i + 1, last)}",
                              "truth" if word in COMPARISONS else "value")

    def condition(self, i):
        """Yields the mutants of the condition of an if or while, whose opening parenthesis is token i."""
        last = self.pair[i] - 1
        first = max([i] + [k for k in range(i, last) if self.words[k] == ";"]) + 1
        named = [self.words[k - 1] for k in range(first, last) if self.words[k] == "=" and self.is_binary(k)]
        if named:
            mutant = self.mutant(first, last, f"!{named[0]}", "declaration")
            yield dataclasses.replace(mutant, start=mutant.end)
        else:
            yield self.mutant(first, last, f"!({self.at(first, last)})", "condition")

    def statement(self, first):
        last = first
        while self.words[last] != ";":
            last = self.pair.get(last, last) + 1
            if self.words[last] in ("}", ")"):
                return
        inside = self.at(first, last - 1)
        if self.words[first] == "return" and inside[6:].strip() not in NOTHING:
            yield self.mutant(first, last, "return {};", "statement")
        elif DROPPABLE.match(inside):
            yield self.mutant(first, last, "", "statement")

    def token(self, i, starts):
        word, before = self.words[i], self.words[i - 1]
        if starts and word not in ("{", "}"):
            yield from self.statement(i)
        if word == "(" and before in ("if", "while"):
            yield from self.condition(i)
        elif self.is_binary(i):
            yield from self.operator(i)
        elif word == "!":
            last = self.operand_end(i, len(LEVELS))
            yield self.mutant(i, last, f"!!{self.at(i + 1, last)}", "truth")
        elif word in WORDS:
            yield self.mutant(i, i, WORDS[word])
        elif number := NUMBER.fullmatch(word):
            value = int(number[1].replace("'", ""), 16 if number[1][:2] in ("0x", "0X") else 10)
            for other in {value + 1, max(value - 1, 0)} - {value}:
                yield self.mutant(i, i, f"{other}{number[2]}")

    def find(self):
        """Finds mutants only in functions, and not in statements that have to be constant."""
        code = []  # for each open bracket: whether it is in a function
        constant = label = False
        for i, word in enumerate(self.words):
            before = self.words[i - 1] if i else ""
            in_code = bool(code) and code[-1]
            starts = before in (";", "{", "}", "else", "do") or before == ":" and label or i > 0 and self.closes_head(i - 1)
            label = word in ("case", "default") or label and before != ":"
            if starts:
                constant = word in ("case", "constexpr", "static_assert", "using", "static")
            if in_code and not constant:
                yield from self.token(i, starts)
            if word in OPENING:
                code.append(in_code or word == "{" and self.opens_code(i))
            elif word in CLOSING:
                code.pop()

    def mutants(self):
        found = list(self.find())
        lines = [end.end() for end in re.finditer("\n", self.text)]
        opposites = {(m.start, m.end) for m in found if m.kind == "truth"}  # `!(a < b)` equals the mutant `a >= b`
        for mutant in found:
            if mutant.kind != "condition" or (mutant.start, mutant.end) not in opposites:
                mutant.line = bisect.bisect(lines, mutant.start) + 1
                was, line = self.text[mutant.start:mutant.end], self.text.splitlines()[mutant.line - 1]
                where = f"  (in: {line})" if len(was) <= 20 and was != line.strip() else ""
                mutant.shown = " ".join(f"{was} => {mutant.text or '(dropped)'}{where}".split())
                yield mutant


def instrumented(text, mutants):
    """Returns the text with these mutants, and for each of its lines the numbers of the mutants on it."""
    def render(start, end, inside):
        out = ""
        while inside:
            mutant = min(inside, key=lambda m: (m.start, -m.end, m.number))  # the widest of those that begin first
            nested = [m for m in inside if m is not mutant and m.start < mutant.end and m.end <= mutant.end]
            inside = [m for m in inside if m is not mutant and m.start >= mutant.end and m not in nested]
            was = render(mutant.start, mutant.end, nested)
            change = f"/*@{mutant.number}*/" + " ".join(re.sub(r"//[^\n]*", "", mutant.text).split())
            chosen = f"/*@{mutant.number}*/mutation::isChosen({mutant.number})"
            out += text[start:mutant.start]
            if mutant.kind == "statement":
                out += f"if ({chosen}) {{\n{change}\n}} else\n{was}"
            elif mutant.kind == "declaration":
                out += f"; {chosen} ?\n{change} :\n!{change}"
            else:
                out += f"({chosen} ?\n({change}) :\n({'!!' if mutant.kind == 'condition' else ''}({was})))"
            start = mutant.end
        return out + text[start:end]

    result = render(0, len(text), mutants)
    return result, [{int(number) for number in re.findall(r"/\*@(\d+)\*/", line)} for line in result.split("\n")]
