/* Registers of a UART. Made from registers.h.tl, registers.csv and bits.json. */
#ifndef UART_REGISTERS_H
#define UART_REGISTERS_H

#define UART_CTRL (0x00)
#define UART_STATUS (0x04)
#define UART_DIVIDER (0x08)
#define UART_DATA (0x0C)

#define UART_CTRL_ENABLE (1u << 0)
#define UART_CTRL_LOOPBACK (1u << 1)
#define UART_STATUS_BUSY (1u << 0)
#define UART_STATUS_OVERRUN (1u << 4)

struct uart_register
{
    const char *name;
    unsigned offset;
    unsigned reset;
    int writable;
    const char *description;
};

static const struct uart_register uart_registers[] = {
    {"CTRL", 0x00, 0x00000001, 1, "Control: enable, mode"},
    {"STATUS", 0x04, 0x00000000, 0, "Set while a transfer runs"},
    {"DIVIDER", 0x08, 0x0000000F, 1, "Baud rate, clock / (16 * (divider + 1))"},
    {"DATA", 0x0C, 0x00000000, 1, "Next byte, see http://example.org/uart"},
};

#endif
