"""Dates: days since 1899-12-30 as a number with a fraction, which before that day still counts forwards. They have no zone."""

import datetime
import math

_FIRST = datetime.datetime(1899, 12, 30)
_DAY = datetime.timedelta(days=1)
_MILLISECONDS_A_DAY = 86_400_000
_FIRST_YEAR = 100


def days_of(date):
    """A date or datetime as days, in whole milliseconds: what is finer is cut off, as isoformat(timespec="milliseconds") does.

    ValueError with a zone, which would be lost, and before the year 100.
    """
    if not isinstance(date, datetime.datetime):
        date = datetime.datetime(date.year, date.month, date.day)
    if date.tzinfo is not None:
        raise ValueError("a date of the library has no zone: give a datetime without tzinfo")
    if date.year < _FIRST_YEAR:
        raise ValueError(f"dates of the library begin with the year {_FIRST_YEAR}")
    since = date - _FIRST
    fraction = (since.seconds * 1000 + since.microseconds // 1000) / _MILLISECONDS_A_DAY
    return since.days + fraction if since.days >= 0 else since.days - fraction


def date_of(days):
    """The datetime, to the nearest millisecond. ValueError for what is no date from the year 100 to 9999."""
    if not math.isfinite(days):
        raise ValueError(f"{days} is no date")
    whole = math.trunc(days)
    milliseconds = math.floor(abs(days - whole) * _MILLISECONDS_A_DAY + 0.5)
    try:
        date = _FIRST + whole * _DAY + datetime.timedelta(milliseconds=milliseconds)
    except OverflowError:
        date = None
    if date is None or date.year < _FIRST_YEAR:
        raise ValueError(f"{days} is no date from the year {_FIRST_YEAR} to 9999")
    return date
