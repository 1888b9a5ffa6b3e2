#include "frame/usage.h"

#include "frame/program.h"
#include "frame/switches.h"
#include "frame/terminal/console.h"
#include "frame/text/format.h"

#include <cstring>

namespace
{

constexpr const char* default_name = "KOV-Controller";

// Kept: its columns are uneven, "HL,hl" has a comma where the others have a slash, and each line is
// worded in its own way.
// clang-format off
constexpr char usage_text[] =
    " COM-Number [Switches]\r\n"
    "  Switch: { -option, /option }\r\n"
    "  Options:\r\n"
    "      N/n: interactive mode\r\n"
    "          (starts automatically when all commands have been processed)\r\n"
    "    Heat-controller management:\r\n"
    "      H/h: get all product data,           ht:    get target heater temperature\r\n"
    "      HTv: set target heater temperature to v\r\n"
    "        (use a negative value to turn off temperature control)\r\n"
    "      ho:    get heater voltage,           hp:    get heater power\r\n"
    "      HVv: set heater voltage limit to v,  hv:    get heater voltage limit\r\n"
    "      HAa: set heater current limit to a,  ha:    get heater current limit\r\n"
    "      HWw: set heater power limit to w,    hw:    get heater power limit\r\n"
    "      HK/hk: get housekeeping data,        HM/hm: get monitoring data\r\n"
    "      HI/hi: get interlock state,          HL,hl: get hardware limits\r\n"
    "      HS f/hs f: save housekeeping and monitoring data to file f\r\n"
    "    HV-supply management (a = module address = slot number = 1..%u):\r\n"
    "      VKa/vka: get housekeeping data,      VOa/voa: get output data\r\n"
    "      VVa v: set target output voltage to v\r\n"
    "      VGanh/VGa: set/get measurement ranges, nh=2 bool arguments [n,y]\r\n"
    "             n = negative output voltage, h = high current range\r\n"
    "      vva:   get target output voltage,    VDa/vda: get output data\r\n"
    "      VTa/vta: tune voltage\r\n"
    "    Plugin module management (a=address=0-%u, base=%c, all=%c):\r\n"
    "      m: list detected modules,            M: list & check module state\r\n"
    "      MSa/msa: get state\r\n"
    "      MAa b:   set activation state,       maa:     get activation state\r\n"
    "      MIa/mia: get product identification, MNa/mna: get product number\r\n"
    "      MMa/mma: get manufacturing date,     MHa/mha: get hardware version\r\n"
    "      MDa/mda: get firmware date,          MFa/mfa: get firmware version\r\n"
    "      MEa/mea: get device type,            MTa/mta: get hardware type\r\n"
    "      MUa/mua: get uptime,                 MOa/moa: get operation time\r\n"
    "      MKa/mka: get housekeeping data,      MCa/mca: get CPU data\r\n"
    "      MLa/mla: get LED data\r\n"
    "      M#a/m#a: restart the module(s),      MGa/mga: rescan module address\r\n"
    "      mza: get module buffer status,       MZa: purge module communication\r\n"
    "      MP/mp: update detected module list,  MR/mr: rescan all modules\r\n"
    "    Device settings:\r\n"
    "      UY/UN: enable/disable device,        u: get device enable state\r\n"
    "      S/s: get device status,              SD/sd: get device state\r\n"
    "      SV/sv: get voltage state,            ST/st: get temperature state\r\n"
    "      SF/sf: get fan state,                SI/si: get interlock state\r\n"
    "      SE u/se: set/get HV-PSU interlock enable mask\r\n"
    "      SG u/sg: set/get heat-controller interlock enable mask\r\n"
    "      SS u/ss: set/get function of slide switch 'Fan'\r\n"
    "      SN/sn: get device input levels,      SP/sp: get power monitor state\r\n"
    "    Base-device management:\r\n"
    "      B/b: get all product data\r\n"
    "      BS/bs: get state\r\n"
    "      BA b:  set activation state,       ba:    get activation state\r\n"
    "      BI/bi: get product identification, BN/bn: get product number\r\n"
    "      BM/bm: get manufacturing date,     BH/bh: get hardware version\r\n"
    "      BD/bd: get firmware date,          BF/bf: get firmware version\r\n"
    "      BE/be: get device type,            BT/bt: get hardware type\r\n"
    "      BU/bu: get uptime,                 BO/bo: get operation time\r\n"
    "      BK/bk: get housekeeping data,      BC/bc: get CPU data\r\n"
    "      B#/b#: restart the module(s),      BG/bg: rescan module address\r\n"
    "      bz: get module buffer status,      BZ: purge module communication\r\n"
    "    Controller management:\r\n"
    "      P/p: get all product data\r\n"
    "      PI/pi: get product identification,   PN/pn: get product number\r\n"
    "      PM/pm: get manufacturing date,       PH/ph: get hardware version\r\n"
    "      PD/pd: get firmware date,            PF/pf: get firmware version\r\n"
    "      PE/pe: get device type,              PT/pt: get hardware type\r\n"
    "      PU/pu: get uptime,                   PK/pk: get housekeeping data\r\n"
    "      PB/pb: get fan data,                 PL/pl: get LED data\r\n"
    "      PC/pc: get CPU data,                 P#/p#: restart the device\r\n"
    "    Configuration management:\r\n"
    "      XI/xi: list deleted/active configurations\r\n"
    "      XS/XL   FileName: save/load all configurations to/from FileName\r\n"
    "      xs/xl   FileName: save/load current configuration to/from FileName\r\n"
    "      XSu/XLu FileName: save/load configuration #u to/from FileName\r\n"
    "      XCu/xcu:          save/load current configuration to/from NVM set #u\r\n"
    "      XNu name/xnu:     set/get name of configuration #u\r\n"
    "      XR/xr:            reset current configuration\r\n"
    "      XDu/xdu: delete configuration #u,      XD/xd: delete all configurations\r\n"
    "      XUu/xuu: undelete configuration #u,    XU/xu: undelete all configurations\r\n"
    "      XWu/xwu: wipe out configuration #u,    XW/xw: wipe out all configurations\r\n"
    "        (wiping out cannot be undoed, thus requires confirmation)\r\n"
    "    Memory management:\r\n"
    "      Y/y FileName: restore/backup memory data\r\n"
    "    Testing and debugging:\r\n"
    "      R/r FileName: create test protocol\r\n"
    "      @n:   test communication by transmitting of up to n characters\r\n"
    "              (allowed value: 0..%d, default=0)\r\n"
    "      &m n: test module #m communication by transmitting of up to n characters\r\n"
    "      G/g:  debug mode, G: additional I/O debug into %s\r\n"
    "    General control:\r\n"
    "        z: get device buffer status,       Z: purge communication\r\n"
    "       $u: set data rate to u baud (default: %u baud)\r\n"
    "      Q/q: quiet mode,                     T/t: terminate the program\r\n"
    "      ?: get this help\r\n"
    "  Notes:\r\n"
    "    1. Use capitals for continuous mode, if available\r\n"
    "    2. Integer numbers can also be entered in hexadecimal or binary formats\r\n"
    "       by appending 'h' or 'b' specifying the respective radix\r\n";
// clang-format on

} // namespace

std::string program_name(const char* path)
{
    if (path == nullptr || *path == '\0')
        return default_name;
    const char* name = path;
    while (const char* separator = std::strpbrk(name, "\\/"))
        name = separator + 1;
    return *name == '\0' || *name == '.' ? default_name : printable(name);
}

void print_program_name(const char* path)
{
    console.print("%.*s", static_cast<int>(std::strcspn(path, ".")), path);
}

void print_banner(const std::string& name)
{
    print_program_name(name.c_str());
    // The compiler's date honours SOURCE_DATE_EPOCH.
    console.print(" ver. 1-10, compilation date: %s\r\n"
                  "Made by the developers of KOV-Controller\r\n",
                  __DATE__);
}

void print_usage(const std::string& name, const DeviceFacts& device)
{
    console.print("Usage: ");
    print_program_name(name.c_str());
    console.print(usage_text, device.highest_slot, device.highest_slot, device.base_unit_character,
                  device.all_modules_character, static_cast<int>(largest_test_count),
                  debug_file_name, default_data_rate);
}
