const char* s = R"x(a "b' )y" \)x";
