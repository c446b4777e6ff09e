// bench_machine: prints what the machine is.
#include <cstdio>

#include "table.h"

int main() {
    printf("%s", bench::MachineDescription().c_str());
}
