# Made from binding.tl.
import ctypes
import os

_library = ctypes.CDLL(os.path.join(os.path.dirname(os.path.abspath(__file__)), "librates.so"))

compound = _library.compound
compound.restype = ctypes.c_double
compound.argtypes = [ctypes.c_double, ctypes.c_double, ctypes.c_int]
compound.__doc__ = "The capital after some years of interest."

doubling_years = _library.doubling_years
doubling_years.restype = ctypes.c_int
doubling_years.argtypes = [ctypes.c_double]
doubling_years.__doc__ = "The whole years after which a capital has doubled."

rate_name = _library.rate_name
rate_name.restype = ctypes.c_char_p
rate_name.argtypes = [ctypes.c_double]
rate_name.__doc__ = "A word for a rate: low, fair or high."

