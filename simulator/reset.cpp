/// A new instrument for a test.
#include "simulator/library/call.h"
#include "simulator/scenario/scenario.h"
#include "simulator/session.h"
#include "simulator/simulator.h"

namespace simulator
{

void reset_for_test()
{
    reset_calls();
    forget_scenario();
    reset_session();
    set_latency_us(0);
    the_instrument().physical.noise = false;
}

} // namespace simulator
