// SPDX-License-Identifier: MIT
#include "registers.h"

#include <stdio.h>

int main(void)
{
    for (unsigned i = 0; i < sizeof uart_registers / sizeof uart_registers[0]; ++i)
        if (uart_registers[i].writable)
            printf("%02x %s: %s\n", uart_registers[i].offset, uart_registers[i].name,
                   uart_registers[i].description);
    printf("%#x\n", UART_CTRL_ENABLE | UART_CTRL_LOOPBACK);
    return 0;
}
