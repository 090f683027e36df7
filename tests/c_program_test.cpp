// Runs c_program.c, which uses the C API from plain C11.

#include "tests/support/private_bus.h"

#include <gtest/gtest.h>

TEST(CProgram, CallsEveryFunctionAgainstTheSimulatedPanel)
{
    PrivateBus bus;
    Process panel(commandOf(OVIK_PANEL_SIM_PATH));
    ASSERT_TRUE(panel.waitForOutput("ready"));
    Process program(commandOf(OVIK_C_PROGRAM_PATH));
    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(program.output(), "Illegal OvikApplication mode\n");
}
