"""NumPy where it is installed."""

from __future__ import annotations

try:
    import numpy
except ImportError:
    numpy = None  # type: ignore[assignment]

__all__ = ["numpy"]
