#include <cstdio>
int main() { std::puts("kdxctl"); return 0; }
