/// The end of a process, after all that its program has registered for it.
#pragma once

namespace journal
{

/// Has `work` done then, unless the process is killed. One work: a further one takes its place.
void at_last_moment(void (*work)());

} // namespace journal
