#include "companion/log/commands.h"
#include "companion/log/load_picture.h"
#include "companion/text.h"
#include "frame/platform/platform.h"

#include <algorithm>

namespace companion
{

namespace
{

enum class Form { terminal, page, svg, png, unknown };

Form form_of(const std::string& out)
{
    if (out.empty())
        return Form::terminal;
    for (const auto& [ending, form] :
         {std::pair{".html", Form::page}, {".svg", Form::svg}, {".png", Form::png}}) {
        if (out.ends_with(ending))
            return form;
    }
    return Form::unknown;
}

/// How fine each form is. A page can be zoomed into; more points would make it slow to open.
void set_fineness(Form form, const Surroundings& outside, PictureRequest& request)
{
    constexpr std::size_t points_of_a_page = 240'000, columns_of_an_image = 1100,
                          dots_of_a_column = 2;
    if (form == Form::page)
        request.most_points = points_of_a_page;
    else if (form == Form::terminal)
        request.columns = dots_of_a_column * static_cast<std::size_t>(std::max(outside.columns, 1));
    else
        request.columns = columns_of_an_image;
}

/// False, with a message, when not all could be written.
bool write_form(Form form, const Drawing& drawing, const std::string& out,
                const Surroundings& outside)
{
    if (form == Form::terminal) {
        Printer printer{outside};
        show_drawing(printer, drawing, outside.columns, outside.has_utf8);
        return printer.flush();
    }
    std::string image;
    TextFile file;
    if (form != Form::page &&
        !draw_image(drawing, form == Form::svg ? ImageForm::svg : ImageForm::png, outside, image))
        return false;
    if (!file.open(out, outside))
        return false;
    if (form == Form::page)
        write_drawing_page(file, drawing);
    else
        file.write(image);
    return file.close();
}

} // namespace

int plot(const PlotRequest& asked, const Surroundings& outside)
{
    const Form form = form_of(asked.out);
    if (form == Form::unknown) {
        outside.complain(valid_utf8(asked.out) + ": a picture ends in .html, .svg or .png");
        return wrong_usage;
    }
    if (!may_be_written(asked.out, asked.files, outside))
        return wrong_usage;
    PictureRequest request{
        .files = asked.files, .only = asked.only, .from = asked.from, .to = asked.to};
    set_fineness(form, outside, request);
    Drawing drawing;
    // What can be read only once counts as a recording.
    const bool has_reports = asked.files.front() != "-" && is_report_file(asked.files.front());
    const int status = has_reports ? load_reports(request, outside, drawing)
                                   : load_recordings(request, outside, drawing);
    if (status == wrong_usage || platform::stop_signal() != 0)
        return wrong_usage;
    return write_form(form, drawing, asked.out, outside) ? status : wrong_usage;
}

} // namespace companion
