#include "companion/journal/library/last_moment.h"

namespace journal
{

namespace
{

void (*last_work)() = nullptr;

void do_last_work()
{
    if (last_work != nullptr)
        last_work();
}

#ifdef _MSC_VER
// The objects of a library are destroyed when the process lets go of it, after the program's.
const struct Last {
    ~Last() { do_last_work(); }
} last;
#else
// The loader calls it after std::exit() has called what the program has registered, and destroyed
// the program's objects; ours would be among those.
__attribute__((destructor)) void at_unloading()
{
    do_last_work();
}
#endif

} // namespace

void at_last_moment(void (*work)())
{
    last_work = work;
}

} // namespace journal
