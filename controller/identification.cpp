#include "controller/identification.h"

#include "frame/device_call.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/text/format.h"
#include "instrument/words.h"

void show_product_data(const Given& given)
{
    show_product_identification(given);
    show_product_number(given);
    show_manufacturing_date(given);
    show_firmware_date(given);
    show_firmware_version(given);
    show_hardware_version(given);
    show_device_type(given);
    show_hardware_type(given);
}

void show_product_identification(const Given&)
{
    progress("Getting product identification:\r\n");
    ProductIdText identification;
    if (call(LIB(GetProductID), &identification))
        print_value_line("Product identification: ", "%s", identification.text().c_str());
}

void show_product_number(const Given&)
{
    progress("Getting product number:\r\n");
    std::int32_t number = 0;
    if (call(LIB(GetProductNo), &number))
        print_value_line("Product number: ", "%d", number);
}

void show_manufacturing_date(const Given&)
{
    progress("Getting manufacturing date:\r\n");
    std::uint16_t year = 0;
    std::uint16_t week = 0;
    if (call(LIB(GetManufDate), &year, &week))
        print_value_line("Product manufacturing date: ", "%s",
                         manufacturing_date_text(year, week).c_str());
}

void show_firmware_date(const Given&)
{
    progress("Getting firmware date:\r\n");
    FirmwareDateText date;
    if (call(LIB(GetFwDate), &date))
        print_value_line("Firmware date: ", "%s", date.text().c_str());
}

void show_firmware_version(const Given&)
{
    progress("Getting firmware version:\r\n");
    std::uint16_t version = 0;
    if (call(LIB(GetFwVersion), &version))
        print_value_line("Firmware version: ", "%s", version_text(version).c_str());
}

void show_hardware_version(const Given&)
{
    progress("Getting hardware version:\r\n");
    std::uint16_t version = 0;
    if (call(LIB(GetHwVersion), &version))
        print_value_line("Hardware version: ", "%s", version_text(version).c_str());
}

void show_device_type(const Given&)
{
    progress("Getting device type:\r\n");
    std::uint16_t type = 0;
    if (call(LIB(GetDevType), &type))
        print_value_line("Device type: ", "%04Xh", type);
}

void show_hardware_type(const Given&)
{
    progress("Getting hardware type:\r\n");
    std::uint32_t type = 0;
    if (call(LIB(GetHwType), &type))
        print_value_line("Hardware type: ", "%08Xh", type);
}
