"""Scripts, tools and tests are called in the documents as their --help, or the build, knows them."""

import functools
import re
import shlex

from documents import ROOT, documents, run, tracked

BUILD = "build/linux"
TOOLS = {"tarn": f"{BUILD}/bin/tarn", "tarn-standin": f"{BUILD}/bin/tarn-standin"}
# The pages on which an option alone is one of the tool's.
PAGES = {"docs/tarn.md": "tarn", "docs/standin.md": "tarn-standin"}
OPTION = re.compile(r"--[a-z][\w-]*")


@functools.cache
def help_of(*command):
    done = run(*command, "--help", timeout=60)
    return done.stdout if done.returncode == 0 else ""


@functools.cache
def options_of(*command):
    return frozenset(OPTION.findall(help_of(*command)))


@functools.cache
def subcommands():
    listed = help_of(TOOLS["tarn"]).partition("\nCommands:\n")[2].partition("\n\n")[0]
    return re.findall(r"^  ([a-z-]+) ", listed, re.MULTILINE)


@functools.cache
def all_options(tool):
    if tool == "tarn":
        return frozenset().union(options_of(TOOLS[tool]), *(options_of(TOOLS[tool], sub) for sub in subcommands()))
    return options_of(TOOLS[tool])


@functools.cache
def scripts():
    return [name for name in tracked()
            if re.fullmatch(r"scripts/[\w-]+", name) and (ROOT / name).stat().st_mode & 0o100]


@functools.cache
def targets():
    listed = run("cmake", "--build", BUILD, "--target", "help").stdout
    return set(re.findall(r"^(?:\.\.\. )?([^:\s]+)", listed, re.MULTILINE))


def calls(text):
    """The commands of a shell text, each as its words; those given to a shell by -c are commands as well."""
    for line in text.replace("\\\n", " ").splitlines():
        try:
            lexer = shlex.shlex(line, posix=True, punctuation_chars=True)
            lexer.whitespace_split = True
            words = list(lexer)
        except ValueError:  # a piece of some other language
            continue
        call = []
        for word in (*words, ";"):
            if set(word) <= set("();<>|&"):
                yield call
                call = []
            else:
                if " " in word and call[-1:] == ["-c"]:
                    yield from calls(word)
                call.append(word)


def wrong_options(name, arguments, known):
    for flag in filter(None, map(OPTION.match, arguments)):
        if flag.group() not in known | {"--help"}:
            yield f"{name} has no option {flag.group()}"


def wrong_in_call(call):
    while call and re.fullmatch(r"\w+=.*", call[0]):
        call = call[1:]
    name, arguments = (call[0].removeprefix(f"{BUILD}/bin/"), call[1:]) if call else ("", [])
    if name in scripts():
        yield from wrong_options(name, arguments, options_of(name))
        if name in ("scripts/test", "scripts/setup"):
            known = re.findall(r"[\w-]+", help_of(name))
            yield from (f"{name} does not know {word}" for word in arguments
                        if re.fullmatch("[a-z][a-z0-9-]*", word) and word not in known)
    elif name == "tarn":
        sub = next((word for word in arguments if re.fullmatch("[a-z]+", word)), None)
        if sub not in (None, "help", *subcommands()):
            yield f"tarn has no command {sub}"
        else:
            known = options_of(TOOLS[name]) | (options_of(TOOLS[name], sub) if sub else frozenset())
            yield from wrong_options(name, arguments, known)
    elif name == "tarn-standin":
        yield from wrong_options(name, arguments, options_of(TOOLS[name]))
    elif name == "ctest":
        for option, pattern in zip(arguments, arguments[1:]):
            if option in ("-R", "-L"):
                listed = run("ctest", "--test-dir", BUILD, "-N", option, pattern).stdout
                if not re.search(r"^Total Tests: [1-9]", listed, re.MULTILINE):
                    yield f"no test is found by ctest {option} {pattern}"
    elif name.endswith("-tests"):
        for option in arguments:
            if option.startswith("--gtest_filter=") and "\n  " not in run(
                    f"{BUILD}/bin/{name}", "--gtest_list_tests", option).stdout:
                yield f"no test is found by {option}"
    for option, target in zip(arguments, arguments[1:]):
        if name == "cmake" and option == "--target" and target not in targets():
            yield f"there is no target {target}"


def wrong_option_alone(page, option):
    tools = [PAGES[page]] if page in PAGES else list(TOOLS)
    known = set().union(*(all_options(tool) for tool in tools), *(options_of(script) for script in scripts()))
    if option not in known | {"--help"}:
        yield f"no tool or script of the project has the option {option}"


def check():
    for tool, path in TOOLS.items():
        if not (ROOT / path).is_file():
            yield f"{path} is missing: build the preset linux with -DTARN_TESTS=ON -DTARN_TOOLS=ON first"
            return
    for page in documents():
        for where, text in page.spans + [(block.where, block.code) for block in page.blocks if block.is_shell]:
            for call in calls(text):
                yield from (f"{where}: {problem}" for problem in wrong_in_call(call))
            if option := re.match(r"--[a-z][\w-]*", text):
                yield from (f"{where}: {problem}" for problem in wrong_option_alone(page.name, option.group()))
