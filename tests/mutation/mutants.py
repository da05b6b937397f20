# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Finds the places at which C++ code can be broken, and how: one change each."""

from __future__ import annotations

import difflib
import hashlib
import re
import sys
from collections import Counter
from collections.abc import Iterable, Iterator
from dataclasses import dataclass
from pathlib import Path

# Debian's bindings are pure Python, but only Debian's own interpreter looks there.
sys.path.append("/usr/lib/python3/dist-packages")
from clang import cindex  # noqa: E402

Kind = cindex.CursorKind
Cursor = cindex.Cursor

COMPARISONS = {
    "==": ["!="],
    "!=": ["=="],
    "<": ["<=", ">="],
    "<=": ["<", ">"],
    ">": [">=", "<="],
    ">=": [">", "<"],
}
LOGICAL = {"&&": "||", "||": "&&"}
ARITHMETIC = {
    "+": "-",
    "-": "+",
    "*": "/",
    "/": "*",
    "%": "*",
    "<<": ">>",
    ">>": "<<",
    "&": "|",
    "|": "&",
    "+=": "-=",
    "-=": "+=",
}
FUNCTIONS = {
    Kind.FUNCTION_DECL,
    Kind.CXX_METHOD,
    Kind.CONSTRUCTOR,
    Kind.DESTRUCTOR,
    Kind.FUNCTION_TEMPLATE,
}
VARIABLES = {Kind.VAR_DECL, Kind.FIELD_DECL, Kind.ENUM_CONSTANT_DECL}
STATEMENTS = {
    Kind.CALL_EXPR,
    Kind.BINARY_OPERATOR,
    Kind.COMPOUND_ASSIGNMENT_OPERATOR,
    Kind.UNARY_OPERATOR,
    Kind.CXX_DELETE_EXPR,
}
# What clang puts around an expression without a character of its own.
WRAPPERS = {Kind.UNEXPOSED_EXPR, Kind.PAREN_EXPR}


@dataclass(frozen=True)
class Mutant:
    """One change of one file. The id holds as long as the changed line stays as it is."""

    id: str
    path: str  # relative to the project, with slashes
    function: str
    operator: str
    line: int
    start: int  # bytes
    end: int
    replacement: bytes

    def apply(self, source: bytes) -> bytes:
        return source[: self.start] + self.replacement + source[self.end :]

    def diff(self, source: bytes) -> str:
        before, after = (
            text.decode().splitlines(keepends=True) for text in (source, self.apply(source))
        )
        lines = difflib.unified_diff(before, after, f"a/{self.path}", f"b/{self.path}", n=1)
        return "".join(lines)


def find_mutants(translation_unit: Path, flags: list[str], files: dict[Path, str]) -> list[Mutant]:
    """The mutants in those of `files` that the translation unit consists of.

    files: absolute paths, each with its name relative to the project.
    """
    unit = cindex.Index.create().parse(
        str(translation_unit),
        args=flags,
        options=cindex.TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD,
    )
    errors = [str(each) for each in unit.diagnostics if each.severity >= cindex.Diagnostic.Error]
    if errors:
        raise RuntimeError(f"cannot parse {translation_unit}: {errors[0]}")
    found: list[Mutant] = []
    for path, name in files.items():
        found += _Finder(unit, path, name).mutants()
    return found


class _Finder:
    """Walks through one file of a parsed translation unit."""

    def __init__(self, unit: cindex.TranslationUnit, path: Path, name: str) -> None:
        self._unit = unit
        self._path = str(path)
        self._name = name
        self._source = path.read_bytes()
        self._changes: dict[tuple[int, int, bytes], tuple[str, str]] = {}
        self._macros = [
            (each.extent.start.offset, each.extent.end.offset)
            for each in unit.cursor.get_children()
            if each.kind == Kind.MACRO_INSTANTIATION and self._is_here(each)
        ]

    def mutants(self) -> list[Mutant]:
        self._walk_declarations(self._unit.cursor)
        occurrences: Counter[tuple[str, ...]] = Counter()
        found = []
        for (start, end, replacement), (function, operator) in sorted(self._changes.items()):
            line_start = self._source.rfind(b"\n", 0, start) + 1
            line_end = self._source.find(b"\n", end)
            line = self._source[line_start:line_end].decode().strip()
            key = (function, operator, line, self._text(start, end), replacement.decode())
            occurrences[key] += 1
            digest = hashlib.sha256("\0".join([*key, str(occurrences[key])]).encode()).hexdigest()
            found.append(
                Mutant(
                    f"{self._name}:{function}:{operator}:{digest[:6]}",
                    self._name,
                    function,
                    operator,
                    self._source.count(b"\n", 0, start) + 1,
                    start,
                    end,
                    replacement,
                )
            )
        return found

    # Where things are

    def _is_here(self, cursor: Cursor) -> bool:
        file = cursor.extent.start.file
        return file is not None and file.name == self._path

    def _text(self, start: int, end: int) -> str:
        return self._source[start:end].decode()

    def _span(self, cursor: Cursor) -> tuple[int, int] | None:
        """The bytes of a cursor; nothing if they are elsewhere or only a part of a macro."""
        if not self._is_here(cursor):
            return None
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        if start >= end or any(first <= start and end <= last for first, last in self._macros):
            return None
        return start, end

    def _text_of(self, cursor: Cursor) -> str:
        span = self._span(cursor)
        return self._text(*span) if span else ""

    def _statement_span(self, cursor: Cursor) -> tuple[int, int] | None:
        """Likewise, with the emit before it as a macro of its own."""
        span = self._span(cursor)
        if span is None:
            return None
        before = re.search(rb"\bemit\s+$", self._source[: span[0]])
        return (before.start() if before else span[0]), span[1]

    def _change(self, function: str, operator: str, start: int, end: int, text: str) -> None:
        if text != self._text(start, end):
            self._changes.setdefault((start, end, text.encode()), (function, operator))

    # Declarations

    def _walk_declarations(self, cursor: Cursor) -> None:
        for child in cursor.get_children():
            if child.kind == Kind.STATIC_ASSERT or not self._is_here(child):
                continue
            if child.kind in FUNCTIONS:
                if child.is_definition():
                    self._walk_definition(child)
            elif child.kind in VARIABLES:
                self._walk_definition(child)
            else:
                self._walk_declarations(child)

    def _walk_definition(self, cursor: Cursor) -> None:
        name = _qualified_name(cursor)
        self._change_texts(cursor, name)
        self._restart_timers(cursor, name)
        for child in cursor.get_children():
            self._walk(child, name, cursor)

    def _change_texts(self, cursor: Cursor, function: str) -> None:
        # By token, because most texts are arguments of macros.
        for token in cursor.get_tokens():
            if token.kind == cindex.TokenKind.LITERAL and token.spelling[0] in "\"'":
                changed = _with_one_character_changed(token.spelling)
                extent = token.extent
                self._change(function, "text", extent.start.offset, extent.end.offset, changed)

    def _restart_timers(self, cursor: Cursor, function: str) -> None:
        """Has a method begin with a restart of each timer of its object that it does not start."""
        body = [each for each in cursor.get_children() if each.kind == Kind.COMPOUND_STMT]
        span = self._span(body[0]) if cursor.kind == Kind.CXX_METHOD and body else None
        if span is None:
            return
        for field in cursor.semantic_parent.get_children():
            is_timer = field.kind == Kind.FIELD_DECL and field.type.spelling == "QTimer"
            if is_timer and f"{field.spelling}.start(" not in self._text(*span):
                start = span[0] + 1
                self._change(function, "restart", start, start, f" {field.spelling}.start();")

    # Expressions and statements

    def _walk(self, cursor: Cursor, function: str, definition: Cursor) -> None:
        if cursor.kind == Kind.STATIC_ASSERT:
            return
        span = self._span(cursor)
        if span is not None:
            self._change_expression(cursor, span, function, definition)
        children = list(cursor.get_children())
        if cursor.kind == Kind.CASE_STMT:
            del children[0]  # another label is mostly one that the switch has already
        for child in children:
            self._walk(child, function, definition)

    def _change_expression(
        self, cursor: Cursor, span: tuple[int, int], function: str, definition: Cursor
    ) -> None:
        kind = cursor.kind
        if kind in (Kind.INTEGER_LITERAL, Kind.CALL_EXPR):
            self._change_integer(cursor, span, function, definition)
        if kind == Kind.CXX_BOOL_LITERAL_EXPR:
            other = {"true": "false", "false": "true"}.get(self._text(*span))
            if other:
                self._change(function, "boolean", *span, other)
        self._change_binary(cursor, function)
        if kind == Kind.UNARY_OPERATOR:
            self._change_unary(cursor, span, function)
        if kind in (Kind.IF_STMT, Kind.WHILE_STMT, Kind.CONDITIONAL_OPERATOR):
            self._negate(next(cursor.get_children()), function)
        if kind == Kind.COMPOUND_STMT:
            self._change_statements(list(_flattened(cursor)), function)
        if kind == Kind.RETURN_STMT:
            self._change_return(cursor, function, definition)
        if kind == Kind.CALL_EXPR and not re.match("operator|min$|max$", cursor.spelling):
            self._swap_arguments(_typed_arguments(cursor), function)
        if kind == Kind.CALL_EXPR:
            self._change_call(cursor, span, function)
        if kind == Kind.CXX_NEW_EXPR:
            self._forget_parent(cursor, function)
        if kind == Kind.DECL_REF_EXPR:
            self._change_enumerator(cursor, span, function)
        self._reset_member(cursor, function)
        if kind == Kind.INIT_LIST_EXPR:
            elements = [(each, _plain(each.type)) for each in cursor.get_children()]
            self._swap_arguments(elements, function)

    def _change_integer(
        self, cursor: Cursor, span: tuple[int, int], function: str, definition: Cursor
    ) -> None:
        text = self._text(*span)
        duration = re.fullmatch(r"(\d+)(ms|s)", text)
        if duration is None and definition.spelling.endswith("Ms"):
            duration = re.fullmatch(r"(\d+)()", text)
        if duration:
            # One millisecond more or less is nothing that anybody can see.
            value, unit = int(duration[1]), duration[2]
            for other in (0, value // 2, value * 2):
                self._change(function, "duration", *span, f"{other}{unit}")
        elif cursor.kind == Kind.INTEGER_LITERAL:
            literal = re.fullmatch(r"(0[xX][0-9a-fA-F]+|\d+)[uUlL]*", text)
            if literal:
                value = int(literal[1], 0)
                for other in dict.fromkeys((value + 1, value - 1, 0)):
                    self._change(function, "integer", *span, str(other))

    def _binary_operator(self, cursor: Cursor) -> tuple[str, int, int] | None:
        """The operator between two operands and where it is. libclang itself does not say."""
        if cursor.kind not in (Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR) and not (
            cursor.kind == Kind.CALL_EXPR and cursor.spelling.startswith("operator")
        ):
            return None
        operands = [self._span(each) for each in cursor.get_children()]
        if len(operands) < 2 or operands[0] is None or operands[-1] is None:
            return None
        start, end = operands[0][1], operands[-1][0]
        operator = self._text(start, end).strip()
        start += self._text(start, end).find(operator)
        return operator, start, start + len(operator)

    def _change_binary(self, cursor: Cursor, function: str) -> None:
        found = self._binary_operator(cursor)
        if found is None:
            return
        operator, start, end = found
        for other in COMPARISONS.get(operator, []):
            self._change(function, "comparison", start, end, other)
        if operator in LOGICAL:
            self._change(function, "logical", start, end, LOGICAL[operator])
        if operator in ARITHMETIC and cursor.kind != Kind.CALL_EXPR:
            self._change(function, "arithmetic", start, end, ARITHMETIC[operator])

    def _change_unary(self, cursor: Cursor, span: tuple[int, int], function: str) -> None:
        text = self._text(*span)
        if text.startswith("!"):
            self._change(function, "negation", *span, text[1:])
        elif text.startswith(("++", "--")):
            self._change(function, "arithmetic", *span, {"++": "--", "--": "++"}[text[:2]] + text[2:])
        elif text.endswith(("++", "--")):
            self._change(
                function, "arithmetic", *span, text[:-2] + {"++": "--", "--": "++"}[text[-2:]]
            )
        elif text.startswith("-") and not text[1:].isdigit():
            self._change(function, "arithmetic", *span, text[1:])

    def _change_call(self, call: Cursor, span: tuple[int, int], function: str) -> None:
        """Forgets the owner of what is created or shown, a translation, or the operator's input."""
        text = self._text(*span)
        translated = re.fullmatch(r"tr\((\".*\")\)", text, re.DOTALL)
        if translated:
            self._change(function, "untranslated", *span, f"QStringLiteral({translated[1]})")
        if re.fullmatch(r".*(?:\bprocessEvents|[lL]oop\.exec)\(\)", text, re.DOTALL):
            flag = "QEventLoop::ExcludeUserInputEvents"
            self._change(function, "events", span[1] - 1, span[1] - 1, flag)
        if call.spelling == "connect":
            return
        for argument in call.get_arguments():
            where = self._span(argument)
            if where and self._text(*where) == "this":
                self._change(function, "parent", *where, "nullptr")

    def _forget_parent(self, new: Cursor, function: str) -> None:
        for call in new.get_children():
            arguments = list(call.get_arguments()) if call.kind == Kind.CALL_EXPR else []
            where = self._span(arguments[0]) if len(arguments) == 1 else None
            if where and arguments[0].type.get_canonical().kind == cindex.TypeKind.POINTER:
                self._change(function, "parent", *where, "nullptr")

    def _change_enumerator(self, cursor: Cursor, span: tuple[int, int], function: str) -> None:
        enumerator = cursor.referenced
        if enumerator is None or enumerator.kind != Kind.ENUM_CONSTANT_DECL:
            return
        others = [
            each
            for each in enumerator.semantic_parent.get_children()
            if each.kind == Kind.ENUM_CONSTANT_DECL
        ]
        at = [each.spelling for each in others].index(enumerator.spelling)
        for other in others[at + 1 :] + others[:at]:
            if other.enum_value != enumerator.enum_value:
                text = self._text(*span)
                changed = text[: len(text) - len(enumerator.spelling)] + other.spelling
                self._change(function, "enumerator", *span, changed)
                return

    def _reset_member(self, cursor: Cursor, function: str) -> None:
        """Has a member lose its value where it is given one."""
        operands = list(cursor.get_children())
        if not _is_assignment(cursor) or operands[0].kind != Kind.MEMBER_REF_EXPR:
            return
        value = self._span(operands[-1])
        if value and self._text(*value) not in ("{}", "0", "false", "nullptr"):
            type_ = operands[-1].type.get_canonical()
            # With "{}" it may be open which of a class's assignments is meant.
            empty = f"{_plain(type_)}()" if type_.kind == cindex.TypeKind.RECORD else "{}"
            self._change(function, "reset", *value, empty)

    def _negate(self, condition: Cursor, function: str) -> None:
        span = self._span(condition)
        if span and condition.kind.is_expression() and not self._negates_itself(condition):
            self._change(function, "negation", *span, f"!({self._text(*span)})")

    def _negates_itself(self, expression: Cursor) -> bool:
        """Whether another operator makes the opposite of it: a comparison, a "!", a literal."""
        inner = _unwrapped(expression)
        if inner.kind == Kind.UNARY_OPERATOR and self._text_of(inner).startswith("!"):
            return True
        operator = self._binary_operator(inner)
        return inner.kind == Kind.CXX_BOOL_LITERAL_EXPR or (
            operator is not None and operator[0] in COMPARISONS
        )

    def _change_statements(self, statements: list[Cursor], function: str) -> None:
        previous: Cursor | None = None
        for index, statement in enumerate(statements):
            is_last = index + 1 == len(statements)
            span = self._statement_span(statement)
            if span is None:
                previous = None
                continue
            is_expression = _unwrapped(statement).kind in STATEMENTS
            leaves = statement.kind == Kind.BREAK_STMT or (
                statement.kind == Kind.RETURN_STMT and not list(statement.get_children())
            )
            if is_expression or (leaves and not is_last):
                self._change(function, "drop", *span, "")
            text = self._text(*span)
            if is_expression and re.match(r"emit\s|(?:QObject::)?connect\(", text):
                self._change(function, "repeat", *span, f"{text}; {text}")
            if is_expression and previous is not None:
                self._swap_statements(previous, statement, function)
            previous = statement if is_expression else None

    def _swap_statements(self, first: Cursor, second: Cursor, function: str) -> None:
        before, after = self._statement_span(first), self._statement_span(second)
        if before is None or after is None or self._commute(first, second):
            return
        between = self._text(before[1], after[0])
        swapped = self._text(*after) + between + self._text(*before)
        self._change(function, "swap-statements", before[0], after[1], swapped)

    def _commute(self, first: Cursor, second: Cursor) -> bool:
        """Whether both only assign, to different targets, from what no assignment changes."""
        targets = []
        for statement in (first, second):
            assignment = _unwrapped(statement)
            operands = list(assignment.get_children())
            if not _is_assignment(assignment) or not all(map(_is_constant_call, _calls(operands))):
                return False
            targets.append(self._text_of(operands[0]))
        return targets[0] not in self._text_of(second) and targets[1] not in self._text_of(first)

    def _change_return(self, cursor: Cursor, function: str, definition: Cursor) -> None:
        for value in cursor.get_children():
            span = self._span(value)
            if span is None:
                return
            text = self._text(*span)
            inner = _unwrapped(value)
            result = definition.result_type.get_canonical()
            enumerator = inner.referenced if inner.kind == Kind.DECL_REF_EXPR else None
            if enumerator is not None and enumerator.kind == Kind.ENUM_CONSTANT_DECL:
                names = [each.spelling for each in enumerator.semantic_parent.get_children()]
                other = names[(names.index(enumerator.spelling) + 1) % len(names)]
                changed = text[: len(text) - len(enumerator.spelling)] + other
                self._change(function, "return", *span, changed)
            elif result.kind == cindex.TypeKind.BOOL:
                if not self._negates_itself(value):
                    self._change(function, "return", *span, f"!({text})")
            elif result.kind == cindex.TypeKind.RECORD:
                if text != "std::nullopt":
                    self._change(function, "return", *span, "{}")
            elif result.kind != cindex.TypeKind.ENUM and not re.fullmatch(r"-?\d+", text):
                self._change(function, "return", *span, f"({text}) + 1")

    def _swap_arguments(self, arguments: list[tuple[Cursor, str]], function: str) -> None:
        for (first, first_type), (second, second_type) in zip(arguments, arguments[1:]):
            before, after = self._span(first), self._span(second)
            if before is None or after is None or before[1] > after[0]:
                continue
            if first_type == second_type:
                between = self._text(before[1], after[0])
                swapped = self._text(*after) + between + self._text(*before)
                self._change(function, "swap-arguments", before[0], after[1], swapped)


def _qualified_name(cursor: Cursor) -> str:
    names = [cursor.spelling]
    parent = cursor.semantic_parent
    while parent is not None and parent.kind != Kind.TRANSLATION_UNIT:
        # The unnamed namespace has a name that says so, or none, by the version of clang.
        if re.fullmatch(r"\w+", parent.spelling):
            names.insert(0, parent.spelling)
        parent = parent.semantic_parent
    return "::".join(re.sub(r"<.*", "", name) for name in names)


def _unwrapped(expression: Cursor) -> Cursor:
    while expression.kind in WRAPPERS:
        children = list(expression.get_children())
        if len(children) != 1:
            break
        expression = children[0]
    return expression


def _flattened(compound: Cursor) -> Iterator[Cursor]:
    """The statements of a block; a case label holds the first of its own."""
    for child in compound.get_children():
        while child.kind in (Kind.CASE_STMT, Kind.DEFAULT_STMT):
            child = list(child.get_children())[-1]
        yield child


def _plain(type_: cindex.Type) -> str:
    spelling = type_.get_canonical().spelling
    return re.sub(r"\bconst\b|[&\s]", "", spelling)


def _typed_arguments(call: Cursor) -> list[tuple[Cursor, str]]:
    arguments = list(call.get_arguments())
    function = call.referenced
    types: Iterable[cindex.Type] = [each.type for each in arguments]
    if function is not None and function.type.kind == cindex.TypeKind.FUNCTIONPROTO:
        parameters = list(function.type.argument_types())
        if len(parameters) >= len(arguments):
            types = parameters
    return [(argument, _plain(type_)) for argument, type_ in zip(arguments, types)]


def _is_assignment(cursor: Cursor) -> bool:
    operands = list(cursor.get_children())
    if cursor.kind == Kind.CALL_EXPR:
        return cursor.spelling == "operator=" and len(operands) >= 2
    if cursor.kind != Kind.BINARY_OPERATOR:
        return False
    tokens = [token.spelling for token in cursor.get_tokens()]
    left = [token.spelling for token in operands[0].get_tokens()]
    return tokens[len(left) : len(left) + 1] == ["="]


def _calls(cursors: Iterable[Cursor]) -> Iterator[Cursor]:
    for cursor in cursors:
        for each in cursor.walk_preorder():
            if each.kind == Kind.CALL_EXPR:
                yield each


def _is_constant_call(call: Cursor) -> bool:
    function = call.referenced
    return function is not None and (
        function.is_const_method() or function.kind == Kind.CONSTRUCTOR
    )


def _with_one_character_changed(literal: str) -> str:
    """Changes the letter or digit in the middle, or whatever else there is; no escape sequence."""
    if literal in (r"'\0'",):
        return r"'\1'"
    inside = range(1, len(literal) - 1)
    plain = [at for at in inside if literal[at] != "\\" and literal[at - 1] != "\\"]
    candidates = [at for at in plain if literal[at].isalnum()] or plain
    if not candidates:
        return literal
    at = candidates[len(candidates) // 2]
    old = literal[at]
    new = {"z": "a", "Z": "A", "9": "0"}.get(old, chr(ord(old) + 1) if old.isalnum() else "#")
    return literal[:at] + new + literal[at + 1 :]
