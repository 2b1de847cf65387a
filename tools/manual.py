"""manual.py PROGRAM VERSION FOLDER: makes the manual page and the bash completion of a program from its --help.

The page is FOLDER/NAME.1.gz, the completion FOLDER/NAME.bash. Each command of the program is asked for its help, too.
"""

import gzip
import pathlib
import re
import subprocess
import sys

COLUMN = 30  # where CLI11 begins to explain


class Row:
    """An option, an argument or a command in a --help."""

    def __init__(self, head):
        self.words = head.split()
        self.help = ""

    def names(self):
        return self.words[0].split(",")

    def environment(self):
        return next((word[5:-1] for word in self.words if word.startswith("(Env:")), None)

    def choices(self):
        found = re.search(r"\{([^}]*)\}$", self.value() or "")
        return found.group(1).split(",") if found else []

    def value(self):
        """What stands for the value; None for a flag."""
        return next((word for word in self.words[1:] if re.match(r"(TEXT|INT|UINT|FLOAT)\b", word)), None)

    def shown_value(self):
        value = self.value()
        if value is None:
            return ""
        kind = value.partition(":")[2].partition("=")[0]
        return "|".join(self.choices()) or re.sub(r"[^A-Z:,|\[\]-].*", "", kind) or "VALUE"


class Help:
    """What `PROGRAM COMMAND... --help` says."""

    def __init__(self, program, command=()):
        self.command = command
        text = subprocess.run([program, *command, "--help"], check=True, text=True, capture_output=True).stdout
        about, _, rest = text.partition("\nUsage: ")
        self.about = about.strip()
        self.usage, _, rest = rest.partition("\n")
        self.usage = self.usage.partition(" ")[2]
        self.sections, self.footer = {}, []
        section = None
        for line in rest.splitlines():
            if line in ("Positionals:", "Options:", "Subcommands:"):
                section = self.sections.setdefault(line[:-1], [])
            elif section is not None and re.match(r"  \S", line):
                head = line[2:] if len(line) < COLUMN or line[COLUMN - 2:COLUMN] != "  " else line[2:COLUMN]
                section.append(Row(head))
                section[-1].help = line[COLUMN:].strip() if head != line[2:] else ""
            elif section is not None and line.startswith(" " * COLUMN) and section:
                section[-1].help = (section[-1].help + " " + line.strip()).strip()
            elif line or self.footer:
                section = None
                self.footer.append(line)
        self.commands = [Help(program, (*command, row.words[0])) for row in self.rows("Subcommands")]

    def rows(self, section):
        return self.sections.get(section, [])

    def options(self):
        return self.rows("Options")


def plain(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text.startswith((".", "'")) else text


def sentence(text):
    return plain(text if text.endswith((".", "?")) else text + ".")


def page_of_rows(rows, named):
    lines = []
    for row in rows:
        value = f" \\fI{plain(row.shown_value())}\\fR" if row.shown_value() else ""
        heads = ", ".join(f"\\fB{plain(name)}\\fR" for name in row.names())
        lines += [".TP", heads + value if named else f"\\fI{plain(row.names()[0])}\\fR", sentence(row.help)]
        if row.environment():
            lines.append(f"Taken from the environment variable {plain(row.environment())} when it is not given.")
    return lines


def page_of_footer(footer):
    lines, inside = [], False
    for line in footer:
        if line.startswith("  ") != inside:
            inside = not inside
            lines.append(".EX" if inside else ".EE")
        if line:
            lines.append(plain(line[2:] if inside else line))
    return lines + ([".EE"] if inside else [])


def page_of_command(help_):
    taken = [word for word in help_.usage.split() if word not in help_.command and word != "[OPTIONS]"]
    lines = [f".SS {plain(' '.join((*help_.command, *taken)))}", sentence(help_.about)]
    lines += page_of_rows(help_.rows("Positionals"), False)
    lines += page_of_rows([row for row in help_.options() if row.names()[0] != "-h"], True)
    lines += [".PP", *page_of_footer(help_.footer)] if help_.footer else []
    for command in help_.commands:
        lines += page_of_command(command)
    return lines


def page_of(name, version, help_):
    about = help_.about.split(". ")[0].rstrip(".")
    lines = [f'.TH {name.upper()} 1 "" "QUORVEL {version}" "QUORVEL"', ".SH NAME",
             f"{plain(name)} \\- {plain(about[0].lower() + about[1:])}",
             ".SH SYNOPSIS", f"\\fB{plain(name)}\\fR {plain(help_.usage)}", ".SH DESCRIPTION", plain(help_.about)]
    end = next((at for at, line in enumerate(help_.footer) if line == "Exit status:"), len(help_.footer))
    lines += page_of_footer([line for line in help_.footer[:end] if line])
    lines += page_of_rows(help_.rows("Positionals"), False)
    lines += [".SH OPTIONS", *page_of_rows(help_.options(), True)]
    if help_.commands:
        lines.append(".SH COMMANDS")
        for command in help_.commands:
            lines += page_of_command(command)
    if end < len(help_.footer):
        lines += [".SH EXIT STATUS", *page_of_footer(help_.footer[end + 1:])]
    return "\n".join(lines) + "\n"


def words_of(help_):
    words = [name for row in help_.options() for name in row.names() if name.startswith("--")]
    words += [choice for row in help_.rows("Positionals") for choice in row.choices()]
    return words + [command.command[-1] for command in help_.commands]


def all_of(help_):
    yield help_
    for command in help_.commands:
        yield from all_of(command)


def completion_of(name, help_):
    function = "_" + name.replace("-", "_")
    values = {}
    for each in all_of(help_):
        for row in each.options():
            if row.value() is not None:
                values.update({option: row.choices() for option in row.names()})
    common = words_of(help_)
    options = " ".join(word for word in common if word.startswith("--"))
    cases = [f'        "{" ".join(each.command)}") words="{" ".join(words_of(each))} {options if each.command else ""}" ;;'
             for each in all_of(help_)]
    places = "|".join(f'"{" ".join(each.command)}"' for each in all_of(help_) if each.command)
    choices = [f'        {option}) mapfile -t COMPREPLY < <(compgen -W "{" ".join(given)}" -- "$current"); return ;;'
               for option, given in sorted(values.items()) if given]
    free = "|".join(option for option, given in sorted(values.items()) if not given)
    lines = [f"# bash completion of {name}, made from its --help", f"{function}()", "{",
             '    local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} place="" word words=""',
             '    case $before in', *choices, *([f"        {free}) return ;;"] if free else []), "    esac"]
    if places:
        lines += ['    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do', '        case "${place:+$place }$word" in',
                  f'            {places}) place="${{place:+$place }}$word" ;;', "        esac", "    done"]
    lines += ['    case $place in', *cases, "    esac", '    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")', "}",
              f"complete -o default -F {function} {name}"]
    return "\n".join(lines) + "\n"


def main():
    program, version, folder = pathlib.Path(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3])
    help_ = Help(program)
    folder.mkdir(parents=True, exist_ok=True)
    with open(folder / (program.name + ".1.gz"), "wb") as file:
        file.write(gzip.compress(page_of(program.name, version, help_).encode(), mtime=0))
    (folder / (program.name + ".bash")).write_text(completion_of(program.name, help_))


if __name__ == "__main__":
    main()
