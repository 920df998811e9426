"""Finds the small changes (mutants) that a source file of the plug-in allows, with the help of libclang's syntax tree."""

import hashlib
import re
from collections import namedtuple

from clang.cindex import Config, CursorKind, Index, TranslationUnit, TypeKind

Config.set_library_file('/usr/lib/llvm-14/lib/libclang.so.1')

# One change: `edits` are (start, end, replacement) in bytes of the file, from the front to the back. The id stays the same
# when lines above move.
Mutant = namedtuple('Mutant', 'id file line function kind before after edits')

COMPARISONS = {'==': ['!='], '!=': ['=='], '<': ['<=', '>='], '<=': ['<', '>'], '>': ['>=', '<='], '>=': ['>', '<']}
LOGIC = {'&&': '||', '||': '&&'}
ARITHMETIC = {'+': '-', '-': '+', '+=': '=', '-=': '+='}
FUNCTIONS = {CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR,
             CursorKind.FUNCTION_TEMPLATE, CursorKind.CONVERSION_FUNCTION}
LEAVING = {CursorKind.RETURN_STMT, CursorKind.BREAK_STMT, CursorKind.CONTINUE_STMT, CursorKind.CXX_THROW_EXPR}
INTEGERS = {TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG}


def unwrapped(node):
    """Returns the node below conversions that the source does not show."""
    while node.kind == CursorKind.UNEXPOSED_EXPR:
        children = list(node.get_children())
        if len(children) != 1 or children[0].extent != node.extent:
            break
        node = children[0]
    return node


def calls_something(node):
    return any(part.kind == CursorKind.CALL_EXPR for part in node.walk_preorder())


def plain_type(node):
    return re.sub(r'\bconst\b|[&\s]', '', unwrapped(node).type.get_canonical().spelling)


class Finder:
    def __init__(self, root, file):
        self.root, self.file = root, file
        self.source = (root / file).read_bytes()
        self.found = []
        self.counts = {}

    def text(self, start, end):
        return self.source[start:end].decode()

    def text_of(self, node):
        return self.text(node.extent.start.offset, node.extent.end.offset)

    def here(self, node):
        start = node.extent.start
        return start.file is not None and start.file.name == str(self.root / self.file)

    def add(self, kind, function, edits):
        """Adds a change with an id of its own, unless it changes nothing."""
        edits = sorted(edits)
        start, end = edits[0][0], edits[-1][1]
        changed, last = '', start
        for edit_start, edit_end, replacement in edits:
            changed += self.text(last, edit_start) + replacement
            last = edit_end
        before = ' '.join(self.text(start, end).split())
        after = ' '.join(changed.split())
        if before == after:
            return
        key = (self.file, function, kind, before, after)
        self.counts[key] = self.counts.get(key, 0) + 1
        name = hashlib.sha1('|'.join(key + (str(self.counts[key]),)).encode()).hexdigest()[:8]
        line = self.source.count(b'\n', 0, start) + 1
        self.found.append(Mutant(name, self.file, line, function, kind, before, after, edits))

    def replace(self, kind, function, node, text):
        self.add(kind, function, [(node.extent.start.offset, node.extent.end.offset, text)])

    def swap(self, kind, function, first, second):
        """Adds a change that swaps two ranges (start, end)."""
        self.add(kind, function, [(*first, self.text(*second)), (*second, self.text(*first))])

    def statement_range(self, node):
        """Returns the range of a statement with its semicolon."""
        start, end = node.extent.start.offset, node.extent.end.offset
        if self.source[end - 1:end] not in (b';', b'}'):
            after = re.match(rb'\s*;', self.source[end:])
            end += after.end() if after else 0
        return start, end

    # What each kind of node allows.

    def operands(self, node):
        """Returns the operator of a node with two sides as (left, right, its text, start, end), or None for other nodes."""
        if node.kind in (CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR):
            sides = list(node.get_children())
        elif node.kind == CursorKind.CALL_EXPR:
            sides = list(node.get_arguments())
        else:
            return None
        if len(sides) != 2 or sides[0].extent.end.offset > sides[1].extent.start.offset:
            return None
        start, end = sides[0].extent.end.offset, sides[1].extent.start.offset
        between = self.text(start, end)
        operator = between.strip()
        if operator not in COMPARISONS and operator not in LOGIC and operator not in ARITHMETIC:
            return None
        start += between.index(operator)
        return sides[0], sides[1], operator, start, start + len(operator)

    def visit_operator(self, node, function):
        parts = self.operands(node)
        if parts is None:
            return
        left, right, operator, start, end = parts
        for other in COMPARISONS.get(operator, []):
            self.add('comparison', function, [(start, end, other)])
        if operator in ARITHMETIC:
            self.add('arithmetic', function, [(start, end, ARITHMETIC[operator])])
        if operator in LOGIC:
            self.add('logic', function, [(start, end, LOGIC[operator])])
            self.replace('operand dropped', function, node, self.text_of(left))
            self.replace('operand dropped', function, node, self.text_of(right))

    def visit_unary(self, node, function):
        text = self.text_of(node)
        operand = next(node.get_children())
        if text.startswith('!'):
            self.replace('negation', function, node, self.text_of(operand))
        elif text.startswith('++'):
            self.replace('arithmetic', function, node, '--' + text[2:])
        elif text.startswith('--'):
            self.replace('arithmetic', function, node, '++' + text[2:])

    def visit_condition(self, node, function):
        children = list(node.get_children())
        if node.kind == CursorKind.FOR_STMT:
            condition = children[1] if len(children) == 4 else None
        else:
            condition = children[0]
        if condition is None:
            return
        inner = unwrapped(condition)
        parts = self.operands(inner)
        if (parts and parts[2] in ('==', '!=')) or self.text_of(inner).startswith('!'):
            return  # the same as the operator's own change
        self.replace('condition', function, condition, '!(' + self.text_of(condition) + ')')

    def visit_literal(self, node, function):
        text = self.text_of(node)
        if node.kind == CursorKind.CXX_BOOL_LITERAL_EXPR:
            self.replace('constant', function, node, 'false' if text == 'true' else 'true')
        elif node.kind == CursorKind.INTEGER_LITERAL and text.isdigit():
            for other in {int(text) + 1, max(int(text) - 1, 0)} - {int(text)}:
                self.replace('constant', function, node, str(other))
        elif node.kind == CursorKind.CHARACTER_LITERAL:
            self.replace('constant', function, node, "'~'")
        elif node.kind == CursorKind.STRING_LITERAL:
            # A literal may be written in several pieces. Pieces from a macro are changed in the macro's definition.
            start = node.extent.start.offset
            for piece in re.finditer(r'"(?:[^"\\\n]|\\.)*"', text):
                self.visit_text(start + len(text[:piece.start()].encode()), piece.group(), function)

    def visit_text(self, start, text, function):
        first = re.match(r'"(\\.|[^"\\])?', text).group(1) or ''
        self.add('text', function, [(start, start + len(text.encode()), '"~' + text[1 + len(first):])])

    def visit_block(self, node, function):
        statements = list(node.get_children())
        for statement in statements:
            inner = unwrapped(statement)
            droppable = inner.kind in (CursorKind.CALL_EXPR, CursorKind.BINARY_OPERATOR, CursorKind.UNARY_OPERATOR,
                                       CursorKind.COMPOUND_ASSIGNMENT_OPERATOR, CursorKind.BREAK_STMT,
                                       CursorKind.CONTINUE_STMT, CursorKind.CXX_THROW_EXPR)
            bare_return = inner.kind == CursorKind.RETURN_STMT and not list(inner.get_children())
            if droppable or bare_return:
                self.add('statement dropped', function, [(*self.statement_range(statement), ';')])
        for first, second in zip(statements, statements[1:]):
            if self.may_swap(first, second):
                self.swap('order', function, self.statement_range(first), self.statement_range(second))

    def may_swap(self, first, second):
        """Returns False when the swapped statements could not compile, or could not make a difference."""
        if unwrapped(first).kind in LEAVING or unwrapped(second).kind in LEAVING:
            return False
        for one, other in ((first, second), (second, first)):
            if one.kind == CursorKind.DECL_STMT:
                if not calls_something(one):
                    return False
                for variable in one.get_children():
                    if re.search(r'\b%s\b' % re.escape(variable.spelling), self.text_of(other)):
                        return False
        return True

    def visit_return(self, node, function, result):
        value = next(node.get_children(), None)
        if value is None or result is None:
            return
        result = result.get_canonical()
        text = self.text_of(value)
        if result.kind == TypeKind.BOOL and text not in ('true', 'false'):
            self.replace('result', function, value, '!(' + text + ')')
        elif result.kind in INTEGERS and not text.isdigit():
            self.replace('result', function, value, '(' + text + ') + 1')
        elif result.kind == TypeKind.POINTER:
            self.replace('result', function, value, 'nullptr')
        elif result.kind == TypeKind.RECORD and text != 'std::string()':
            self.replace('result', function, value, '{}')

    def visit_call(self, node, function):
        if node.spelling.startswith('operator') or self.operands(node):
            return
        arguments = [argument for argument in node.get_arguments() if self.here(argument)]
        for i, first in enumerate(arguments):
            for second in arguments[i + 1:]:
                if plain_type(first) == plain_type(second) and first.extent.end.offset <= second.extent.start.offset:
                    self.swap('arguments', function, (first.extent.start.offset, first.extent.end.offset),
                              (second.extent.start.offset, second.extent.end.offset))
        if node.spelling == 'append':
            member = next(node.get_children(), None)
            base = next(member.get_children(), None) if member else None
            if base is not None and base.extent.start.offset == node.extent.start.offset:
                self.replace('call dropped', function, node, self.text_of(base))

    def visit_constructor(self, node, function):
        """Lets a member start without its value."""
        for member in node.get_children():
            if member.kind != CursorKind.MEMBER_REF or not self.here(member):
                continue
            start = end = member.extent.end.offset + 1
            depth = 1
            while depth:
                depth += {b'(': 1, b')': -1}.get(self.source[end:end + 1], 0)
                end += 1
            if self.source[start - 1:start] == b'(' and end - 1 > start:
                self.add('start value dropped', function, [(start, end - 1, '')])

    def visit_list(self, node, function):
        if node.type.get_canonical().kind not in (TypeKind.CONSTANTARRAY, TypeKind.INCOMPLETEARRAY):
            return
        places = [(part.extent.start.offset, part.extent.end.offset) for part in node.get_children()]
        for first, second in zip(places, places[1:]):
            self.swap('order', function, first, second)
            self.add('element dropped', function, [(first[0], second[0], '')])
        if len(places) > 1:
            self.add('element dropped', function, [(places[-2][1], places[-1][1], '')])

    def visit_reference(self, node, function):
        """Takes another member, function or constant of the same type from the same place."""
        target = node.referenced
        if target is None or target.location.file is None or not self.ours(target.location.file.name):
            return
        if target.kind not in (CursorKind.CXX_METHOD, CursorKind.FIELD_DECL, CursorKind.VAR_DECL,
                               CursorKind.ENUM_CONSTANT_DECL):
            return
        parent = target.semantic_parent
        if target.kind == CursorKind.VAR_DECL and parent.kind not in (CursorKind.NAMESPACE, CursorKind.TRANSLATION_UNIT):
            return
        siblings = []
        for other in parent.get_children():
            if other.kind == target.kind and other.type.get_canonical() == target.type.get_canonical():
                if other.spelling not in siblings and self.ours(other.location.file.name if other.location.file else ''):
                    siblings.append(other.spelling)
        if target.spelling not in siblings or len(siblings) < 2:
            return
        other = siblings[(siblings.index(target.spelling) + 1) % len(siblings)]
        text = self.text_of(node)
        if text.endswith(target.spelling):
            end = node.extent.end.offset
            self.add('sibling', function, [(end - len(target.spelling), end, other)])

    def ours(self, name):
        return name.startswith(str(self.root) + '/') and '/devhost/' not in name

    def visit(self, node, function, result):
        if node.kind in FUNCTIONS and self.here(node):
            function = node.spelling
            result = node.result_type
        kind = node.kind
        self.visit_operator(node, function)
        if kind == CursorKind.UNARY_OPERATOR:
            self.visit_unary(node, function)
        elif kind in (CursorKind.IF_STMT, CursorKind.WHILE_STMT, CursorKind.FOR_STMT, CursorKind.CONDITIONAL_OPERATOR):
            self.visit_condition(node, function)
        elif kind in (CursorKind.CXX_BOOL_LITERAL_EXPR, CursorKind.INTEGER_LITERAL, CursorKind.CHARACTER_LITERAL,
                      CursorKind.STRING_LITERAL):
            self.visit_literal(node, function)
        elif kind == CursorKind.COMPOUND_STMT:
            self.visit_block(node, function)
        elif kind == CursorKind.RETURN_STMT:
            self.visit_return(node, function, result)
        elif kind == CursorKind.CALL_EXPR:
            self.visit_call(node, function)
        elif kind == CursorKind.CONSTRUCTOR:
            self.visit_constructor(node, function)
        elif kind == CursorKind.INIT_LIST_EXPR:
            self.visit_list(node, function)
        if kind in (CursorKind.MEMBER_REF_EXPR, CursorKind.DECL_REF_EXPR):
            self.visit_reference(node, function)
        if kind == CursorKind.LAMBDA_EXPR:
            result = None  # the tree does not say what a lambda returns
        for child in node.get_children():
            if self.here(child):
                self.visit(child, function, result)

    def find(self):
        arguments = ['-x', 'c++', '-std=c++14', '-I' + str(self.root), '-DSNMP_ENTERPRISE_NUMBER="32473"']
        unit = Index.create().parse(str(self.root / self.file), arguments,
                                    options=TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
        errors = [str(message) for message in unit.diagnostics if message.severity >= 3]
        if errors:
            raise SystemExit('mutate: cannot read %s: %s' % (self.file, errors[0]))
        for child in unit.cursor.get_children():
            if self.here(child):
                self.visit(child, '', None)
        self.find_macro_texts()
        unique = {}
        for mutant in self.found:
            unique.setdefault(tuple(mutant.edits), mutant)
        return sorted(unique.values(), key=lambda mutant: (mutant.line, mutant.edits))

    def find_macro_texts(self):
        """Finds texts in the definitions of macros, which the tree does not show."""
        for macro in re.finditer(rb'^#define\s+(\w+)((?:.*\\\n)*.*\n)', self.source, re.M):
            for piece in re.finditer(rb'"(?:[^"\\\n]|\\.)*"', macro.group(2)):
                self.visit_text(macro.start(2) + piece.start(), piece.group().decode(), macro.group(1).decode())


def find(root, file):
    return Finder(root, file).find()
