# SPDX-License-Identifier: Apache-2.0
"""The framework's exceptions. Each is also the usual Python exception for its case.

``name`` is the attribute, argument or type that was wrong; ``type_name`` the type that was
expected; ``code`` the operation that is not supported. They are None where the exception does not
say it.
"""

from __future__ import annotations

import builtins


class Exception(builtins.Exception):  # noqa: A001 (the framework's name)
    """Root of the framework's exceptions."""

    name: str | None = None
    type_name: str | None = None
    code: int | None = None

    def __str__(self) -> str:
        return str(self.args[0]) if self.args else ""


class RangeException(Exception, ValueError):
    """A value is out of range, malformed or missing, or a name is unknown."""


class TypeException(Exception, TypeError):
    """An argument, a value or an index is missing or of the wrong type."""


class BadIndexAttrException(Exception, KeyError):
    """An index was given for an attribute without an index."""


# AttributeError has a name, too, which is always a text.
class ConstException(Exception, AttributeError):  # type: ignore[misc]
    """A modifying operation on a const instance."""


class OpNotSupportedException(Exception, AttributeError):  # type: ignore[misc]
    """The attribute does not support the operation."""


class UnknownArgException(Exception, TypeError):
    """More arguments than the function or constructor takes, or one that it does not know."""


class AssertionFailed(Exception, AssertionError):
    """An assertion of the framework or the library failed. The process goes on."""


class LookupException(Exception, LookupError):
    """A record, a rule or an operation that was looked up is not there."""


class CallbackException(Exception):
    """An observer raised an exception, which is its cause. Also an exception of the cause's class.

    What was written is stored, and all other observers were called.
    """


def callback_exception(cause: BaseException) -> BaseException:
    """The exception that a call raises whose observer raised `cause`.

    The framework's own exceptions, failed assertions and what is no Exception stay as they are.
    """
    kind = type(cause)
    if isinstance(cause, (Exception, AssertionError)) or not isinstance(
            cause, builtins.Exception):
        return cause

    def reduce(self: BaseException) -> tuple[object, ...]:
        return callback_exception, (self.__cause__,)

    try:
        _, args, *state = tuple(cause.__reduce__())  # what `args` has not, as the file of an OSError
        raised: BaseException = type(kind.__name__, (CallbackException, kind), {
            "__module__": kind.__module__, "__reduce__": reduce,
            "__str__": lambda self: str(self.__cause__)})(*args)
        raised.__dict__.update(state[0] if state else {})
    except TypeError:  # the class cannot be combined, or needs other arguments
        raised = CallbackException(str(cause))
    raised.__cause__ = cause
    return raised
