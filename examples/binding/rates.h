/* Made from header.tl. */
#ifndef RATES_H
#define RATES_H

/* The capital after some years of interest. */
double compound(double capital, double rate, int years);

/* The whole years after which a capital has doubled. */
int doubling_years(double rate);

/* A word for a rate: low, fair or high. */
const char* rate_name(double rate);

#endif
