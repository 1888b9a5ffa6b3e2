/// What the controller, its base unit and its modules tell alike for the acceptance test.
#pragma once

#include "frame/device_call.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "protocol/report/report.h"

#include <cstdint>
#include <optional>
#include <string>

/// Whom the questions go to.
struct ReportedUnit {
    std::optional<unsigned> address; ///< none = the controller itself
    std::string of_name;             ///< " of HV-supply 1"; empty for the controller

    /// Calls the controller's function, or the module's with its address before the results. False
    /// after a failure, which has been reported.
    template <class ControllerFunction, class ModuleFunction, class... Results>
    [[nodiscard]] bool ask(LibraryFunction<ControllerFunction> of_controller,
                           LibraryFunction<ModuleFunction> of_module, Results... results) const
    {
        return address ? call(of_module, *address, results...) : call(of_controller, results...);
    }

    void announce(const char* what) const { progress("Getting %s%s:\r\n", what, of_name.c_str()); }
};

/// What a unit said about its kind.
struct UnitKind {
    std::uint16_t device_type = 0;
    std::uint32_t hardware_type = 0;
};

// Each reads and reports; false after a failed call, which has been reported.

/// Product identification, product number, firmware version and date.
[[nodiscard]] bool report_identification(Report& report, const ReportedUnit& unit);
/// Device type, hardware type with what it means, hardware version.
[[nodiscard]] bool report_kind(Report& report, const ReportedUnit& unit, UnitKind& kind);
[[nodiscard]] bool report_manufacturing_date(Report& report, const ReportedUnit& unit);
[[nodiscard]] bool report_led_data(Report& report, const ReportedUnit& unit);
