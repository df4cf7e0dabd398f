// An empty program: what it costs to start one.
int main() {}
