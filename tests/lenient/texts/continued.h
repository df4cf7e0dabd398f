#define A \
    b \
    c
// one \
two
