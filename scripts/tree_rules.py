#!/usr/bin/python3
"""What the tree promises beyond what a compiler sees: layers and sizes.

Usage: tree_rules.py layers|sizes, or tree_rules.py files SUFFIX... to list files."""

import ast
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
NOT_OURS = {"build", "out", ".git", "__pycache__"}
PICTURES = {".svg", ".png"}

# From the bottom up. A folder includes its own files and those of the lines below it.
LAYERS = (
    ("platform",),
    ("platform/interfaces", "platform/files"),
    ("platform/loop", "platform/text", "platform/dbus", "platform/power_supply",
     "platform/volumes", "platform/x11"),
    ("platform/functions", "platform/power_messages"),
    ("framework/values", "framework/loop"),
    ("framework",),
    ("framework/files", "framework/ui/drawing"),
    ("framework/corefoundation", "framework/ui"),
    ("framework/events",),
    ("globals",),
    ("panel",),
    ("power",),
    ("shell",),
    ("bridges",),
    ("monitor",),
    ("main",),
)
RANKS = {folder: rank for rank, folders in enumerate(LAYERS) for folder in folders}
# Folders that no layer may include, and that stand beside the layers.
BESIDE = ("tests", "bench", "demo", "post")
# The one alias for the deleters of C objects serves the command beside the layers as well.
SHARED = "platform/CDeleter.h"
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
SYSTEM_HEADER = re.compile(
    r"^(xcb|cairo|pango|systemd|plist|fontconfig|X11|gio|gobject)/|^(glib|cairo|pango|fontconfig)\b")

LONGEST_FILE = 500
LONGEST_FUNCTION = 60
LEAST_TESTS, MOST_TESTS = 15, 33


def tree_files():
    """All files of the tree, relative to its root, new ones included."""
    listing = subprocess.run(
        ["git", "-c", f"safe.directory={ROOT}", "ls-files", "-z", "--cached", "--others",
         "--exclude-standard"], cwd=ROOT, capture_output=True, check=False)
    if listing.returncode == 0 and listing.stdout:
        names = [pathlib.Path(name) for name in listing.stdout.decode().split("\0") if name]
    else:  # an unpacked archive, or no git
        names = [path.relative_to(ROOT) for path in ROOT.rglob("*")]
    return sorted({name for name in names
                   if not NOT_OURS.intersection(name.parts) and (ROOT / name).is_file()})


def text_of(name):
    """The lines of a text file; none of a picture."""
    if name.suffix in PICTURES:
        return []
    return (ROOT / name).read_text(encoding="utf-8", errors="replace").splitlines()


def is_cpp(name):
    return name.suffix in (".cpp", ".h")


def layer_of(path):
    """The innermost folder of a path that is a layer; none where no layer is."""
    return next((str(folder) for folder in pathlib.PurePath(path).parents
                 if str(folder) in RANKS), None)


def layer_complaint(name, bracket, header):
    folder, target = name.parts[0], header.split("/")[0]
    layer, below = layer_of(name), layer_of(header)
    if folder in ("tests", "bench") or header == SHARED:
        return None
    if bracket == '"':
        if layer and below and layer != below and RANKS[below] >= RANKS[layer]:
            return f"{layer} includes from above or beside: {header}"
        if target != folder and (target in BESIDE or (folder in BESIDE and target in RANKS)):
            return f"{folder} and {target} do not include each other: {header}"
        if target not in RANKS and target not in BESIDE and target != "resources":
            return f"includes are written from the root of the tree: {header}"
    elif SYSTEM_HEADER.match(header):
        allowed = (folder == "platform" or (folder == "framework" and name.suffix == ".cpp") or
                   (folder == "post" and header.startswith("systemd/")))
        if not allowed:
            return f"a system library's header outside of its wrappers: {header}"
    return None


def layers():
    for name in filter(is_cpp, tree_files()):
        for number, line in enumerate(text_of(name), 1):
            include = INCLUDE.match(line)
            complaint = include and layer_complaint(name, *include.groups())
            if complaint:
                yield f"{name}:{number}: {complaint}"


def without_text(source):
    """C++ source with comments, strings and characters blanked out, lines kept."""
    token = re.compile(r'//[^\n]*|/\*.*?\*/|R"([^(\n]*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|'
                       r"(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])+'|^[ \t]*#(?:[^\n\\]|\\.)*",
                       re.DOTALL | re.MULTILINE)
    return token.sub(lambda found: re.sub(r"[^\n]+", " ", found[0]) or " ", source)


def is_function(head):
    """Whether what stands before an opening brace makes it a function's body."""
    head = re.sub(r"\btemplate\s*<[^{;]*?>\s*(?=[\w\[])", "", head)
    if "(" not in head or re.match(r"\s*(inline\s+)?(namespace|class|struct|union|enum)\b", head):
        return False
    flat, previous = head, None
    while flat != previous:
        flat, previous = re.sub(r"\([^()]*\)", "", flat), flat
    return "operator" in head or "=" not in flat or re.search(r"=\s*\[", head) is not None


def cpp_functions(name):
    """(first line, number of lines) of each outermost function body."""
    source = without_text((ROOT / name).read_text(encoding="utf-8"))
    scopes, head_start, line, inside = [], 0, 1, 0
    for position, char in enumerate(source):
        if char == "\n":
            line += 1
        elif char == "{":
            opens = not inside and is_function(source[head_start:position])
            inside += 1 if opens or inside else 0
            scopes.append(line if opens else None)
            head_start = position + 1
        elif char == "}" and scopes:
            began = scopes.pop()
            inside -= 1 if inside else 0
            if began is not None:
                yield began, line - began + 1
            head_start = position + 1
        elif char == ";":
            head_start = position + 1


def python_functions(name):
    for node in ast.walk(ast.parse((ROOT / name).read_text(encoding="utf-8"))):
        if isinstance(node, (ast.FunctionDef, ast.AsyncFunctionDef)):
            yield node.lineno, node.end_lineno - node.lineno + 1


def bash_functions(name):
    began = None
    for number, line in enumerate(text_of(name), 1):
        if re.match(r"[\w-]+\(\) \{$", line):
            began = number
        elif line == "}" and began is not None:
            yield began, number - began + 1
            began = None


def functions_of(name):
    first = (text_of(name) or [""])[0]
    if is_cpp(name):
        return cpp_functions(name)
    if name.suffix == ".py" or first.startswith("#!") and "python" in first:
        return python_functions(name)
    if first.startswith("#!") and "bash" in first:
        return bash_functions(name)
    return ()


def counted_lines(names):
    """Lines that are neither blank nor comment, of C++ and Python; a docstring is a comment."""
    count = 0
    for name in names:
        text = re.sub(r'^\s*"""(?:.|\n)*?"""', "", "\n".join(text_of(name)), flags=re.MULTILINE)
        blank = re.compile(r"\s*(//.*)?$" if is_cpp(name) else r"\s*(#.*)?$")
        count += sum(not blank.match(line) for line in text.split("\n"))
    return count


def sizes():
    files = tree_files()
    for name in files:
        lines = len(text_of(name))
        if lines > LONGEST_FILE:
            yield f"{name}: {lines} lines, at most {LONGEST_FILE} are wanted"
        for began, length in functions_of(name):
            if length > LONGEST_FUNCTION:
                yield f"{name}:{began}: a function of {length} lines, at most {LONGEST_FUNCTION}"
    tests = counted_lines(name for name in files if name.parts[0] == "tests"
                          and (is_cpp(name) or name.suffix == ".py"))
    code = counted_lines(name for name in files
                         if is_cpp(name) and name.parts[0] not in ("tests", "bench", "demo"))
    share = 100 * tests / max(1, tests + code)
    told = f"tests are {share:.1f} % of code and tests together ({tests} of {tests + code} lines)"
    if LEAST_TESTS <= share <= MOST_TESTS:
        print(told)
    else:
        yield f"{told}; {LEAST_TESTS} to {MOST_TESTS} % are wanted"


def main(arguments):
    if arguments[:1] == ["files"]:
        print("\n".join(str(name) for name in tree_files() if name.suffix in arguments[1:]))
        return 0
    rules = {"layers": layers, "sizes": sizes}
    if len(arguments) != 1 or arguments[0] not in rules:
        print(__doc__, file=sys.stderr)
        return 2
    complaints = list(rules[arguments[0]]())
    print("\n".join(complaints), end="\n" if complaints else "")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
