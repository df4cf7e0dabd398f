// it's
/** don't
 * stop */
x /* y
