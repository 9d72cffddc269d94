#!/usr/bin/env python3
"""Writes the first C++ block of a document to a file, so that the example in it is compiled.

usage: extract_example.py DOCUMENT OUTPUT
"""

import pathlib
import re
import sys

blocks = re.findall(r"```cpp\n(.*?)```", pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"),
                    re.DOTALL)
if not blocks:
    sys.exit(f"{sys.argv[1]}: no C++ block")
pathlib.Path(sys.argv[2]).write_text(blocks[0], encoding="utf-8")
