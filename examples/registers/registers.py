"""Registers of a UART. Made from registers.py.tl, registers.csv and bits.json."""

OFFSETS = {
    "CTRL": 0x00,
    "STATUS": 0x04,
    "DIVIDER": 0x08,
    "DATA": 0x0C,
}

BITS = {
    "CTRL": {"ENABLE": 1 << 0, "LOOPBACK": 1 << 1, },
    "STATUS": {"BUSY": 1 << 0, "OVERRUN": 1 << 4, },
}


def explain(register, value):
    names = [name for name, bit in BITS.get(register, {}).items() if value & bit]
    return "{} = {:#x}: {}".format(register, value, ", ".join(names) or "-")
