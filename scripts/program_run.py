"""Shared by mutants and stress: how the program is run, and how a crash is recognized."""
import os

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
TIME_LIMIT_S = 300  # per run: a few hundred small pictures take a few seconds
CRASHES = ("Sanitizer", "runtime error", "terminate called", "***")  # printed by sanitizers, libstdc++ and glibc


def correct_command(program, folder):
    """Returns the start of a command that writes to the folder's "out"."""
    return [program, "correct", "-j", "2", "-o", os.path.join(folder, "out")]


def correct_environment(folder):
    return dict(os.environ, QT_QPA_PLATFORM="offscreen", XDG_CONFIG_HOME=os.path.join(folder, "config"),
                LSAN_OPTIONS="suppressions=%s:print_suppressions=0" % os.path.join(ROOT, "tests", "lsan.supp"))
