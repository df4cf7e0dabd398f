/* The functions of the library, written by hand against the header that is made for them. */
#include "rates.h"

double compound(double capital, double rate, int years)
{
    for (; years > 0; years--)
        capital *= 1 + rate;
    return capital;
}

int doubling_years(double rate)
{
    int years = 0;
    while (rate > 0 && compound(1, rate, years) < 2)
        years++;
    return years;
}

const char* rate_name(double rate)
{
    return rate < 0.01 ? "low" : rate < 0.05 ? "fair" : "high";
}
