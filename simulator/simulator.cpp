#include "simulator/simulator.h"

#include "simulator/library/call.h"
#include "simulator/model/the_instrument.h"
#include "simulator/scenario/scenario.h"
#include "simulator/session.h"

namespace simulator
{

void reset_for_test()
{
    reset_calls();
    forget_scenario();
    reset_session();
    Physical& physical = the_instrument().physical;
    physical.answer_time_us = 0;
    physical.noise = false;
}

bool apply(std::string_view line, std::string& problem)
{
    return carry_out_line(line, problem);
}

void observe_calls(std::function<void(const CallRecord&)> observer)
{
    set_observer(std::move(observer));
}

} // namespace simulator
