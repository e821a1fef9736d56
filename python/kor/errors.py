# SPDX-License-Identifier: Apache-2.0
"""The framework's exceptions. Each is also the usual Python exception for its case.

``name`` is the attribute, argument or type that was wrong; ``type_name`` the type that was expected;
``code`` the operation that is not supported. They are None where the exception does not say it.
"""


class Exception(Exception):  # noqa: A001 (the framework's name)
    """Root of the framework's exceptions."""

    name = None
    type_name = None
    code = None

    def __str__(self):
        return self.args[0] if self.args else ""


class RangeException(Exception, ValueError):
    """A value is out of range, malformed or missing, or a name is unknown."""


class TypeException(Exception, TypeError):
    """An argument, a value or an index is missing or of the wrong type."""


class BadIndexAttrException(Exception, KeyError):
    """An index was given for an attribute without an index."""


class ConstException(Exception, AttributeError):
    """A modifying operation on a const instance."""


class OpNotSupportedException(Exception, AttributeError):
    """The attribute does not support the operation."""


class UnknownArgException(Exception, TypeError):
    """More arguments than the function or constructor takes, or one that it does not know."""


class AssertionFailed(Exception, AssertionError):
    """An assertion of the framework or the library failed. The process goes on."""
