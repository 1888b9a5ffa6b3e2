/// The groups of benchmarks. Each notes its results for the table at the end.
#pragma once

namespace bench
{

/// Cycle rates, terminal traffic and processor time of live displays.
void register_live_displays();

/// How long the program takes from its start to its end.
void register_startup();

/// Waiting for a key that nobody presses.
void register_key_wait();

/// The memory image to and from its file.
void register_memory_file();

/// Reading configuration files.
void register_config_reader();

/// Configuration sets and memory between device and file, by the program's commands.
void register_device_transfers();

/// What the companion makes of reports, where it is built.
void register_reports();

/// The whole acceptance test under the tests' virtual clock.
void register_acceptance_test();

/// What a journal of the library calls costs.
void register_journal();

/// Statistics of recordings.
void register_recordings();

} // namespace bench
