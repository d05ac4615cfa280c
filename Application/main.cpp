#include <cstdio>

// Placeholder until the tray application lands: it builds and runs, and says so.
int main()
{
    std::puts("Tessera 1.30: the tray application is not built yet.");
    return 0;
}
