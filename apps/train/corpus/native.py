"""What the two synthesiser bindings share: prototypes for C functions."""

import ctypes


def declare(library, prototypes):
    """Gives the functions of a loaded library their result and argument types."""
    for name, (result, *arguments) in prototypes.items():
        function = getattr(library, name)
        function.restype = result
        function.argtypes = arguments


def load(name):
    """Loads a library whose symbols later ones may need."""
    return ctypes.CDLL(name, mode=ctypes.RTLD_GLOBAL)
