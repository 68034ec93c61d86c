// The console tool's entry.
#include "app/console.hpp"
#include "app/tool.hpp"

#include <cstdio>
#include <iostream>

int main() {
    vantu::orvanta::app::console terminal(std::cin, stdout, stderr);
    return vantu::orvanta::app::run_tool(terminal);
}
