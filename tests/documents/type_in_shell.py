#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Types into an interactive shell as a user does, and prints what stands on the line afterwards.

usage: type_in_shell.py bash|zsh COMPLETION-SCRIPT <LINES

For each line of standard input, its characters are typed and then the tabulator key; a line that
ends with "*" gets the key instead that inserts all that could be completed. One line is printed
for each, as the shell would run it.
"""
import os
import pty
import select
import subprocess
import sys
import tempfile
import time

LIMIT = 60.0
TAB, ALL, TELL = "\t", "\x18a", "\x18t"

# TELL writes the line into the file "told" and begins a new one.
BASH = r"""
PS1='READY>' PS2=
source "$SCRIPT"
bind 'set bell-style none' 'set completion-query-items 0' 'set page-completions off'
bind '"\C-xa": insert-completions' 2>/dev/null
tell() { printf '%s\n' "$READLINE_LINE" >>"$TOLD"; READLINE_LINE= READLINE_POINT=0; }
bind -x '"\C-xt": tell'
"""
ZSH = r"""
PS1='READY>' LISTMAX=10000
setopt no_beep no_always_last_prompt
fpath=(${SCRIPT:h} $fpath)
autoload -Uz compinit && compinit -u -D
zle -C all-matches complete-word _generic
zstyle ':completion:all-matches::::' completer _all_matches _complete
zstyle ':completion:all-matches:*' insert yes
bindkey '^Xa' all-matches
tell() { print -r -- "$BUFFER" >>$TOLD; BUFFER= }
zle -N tell
bindkey '^Xt' tell
"""
SHELLS = {"bash": (BASH, ".bashrc", ["bash", "--noprofile", "--rcfile"]),
          "zsh": (ZSH, ".zshrc", ["zsh", "-i", "-o", "no_global_rcs"])}


class Shell:
    def __init__(self, name, script, folder):
        text, start_file, command = SHELLS[name]
        start_file = os.path.join(folder, start_file)
        with open(start_file, "w", encoding="utf-8") as file:
            file.write(text)
        self.told = os.path.join(folder, "told")
        environment = dict(os.environ, SCRIPT=script, TOLD=self.told, ZDOTDIR=folder)
        self.controller, terminal = pty.openpty()
        if name == "bash":
            command = command + [start_file, "-i"]
        self.child = subprocess.Popen(command, stdin=terminal, stdout=terminal, stderr=terminal,
                                      env=environment, start_new_session=True)
        os.close(terminal)
        self.seen = b""
        self.wait_for(lambda: b"READY>" in self.seen)

    def wait_for(self, holds):
        deadline = time.monotonic() + LIMIT
        while not holds():
            if time.monotonic() > deadline:
                sys.exit("the shell does not answer; it wrote: " + repr(self.seen[-2000:]))
            if select.select([self.controller], [], [], 0.01)[0]:
                self.seen += os.read(self.controller, 65536)

    def answers(self):
        try:
            with open(self.told, encoding="utf-8", errors="surrogateescape") as file:
                return file.read().splitlines()
        except FileNotFoundError:
            return []

    def complete(self, line):
        count = len(self.answers())
        keys = line[:-1] + ALL if line.endswith("*") else line + TAB
        os.write(self.controller, (keys + TELL).encode())
        self.wait_for(lambda: len(self.answers()) > count)
        return self.answers()[-1]

    def end(self):
        os.close(self.controller)
        self.child.kill()
        self.child.wait()


def main(name, script):
    with tempfile.TemporaryDirectory() as folder:
        shell = Shell(name, os.path.realpath(script), folder)
        for line in sys.stdin.read().splitlines():
            print(shell.complete(line))
        shell.end()


if __name__ == "__main__":
    main(*sys.argv[1:])
