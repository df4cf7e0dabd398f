s = "one \
    two"
