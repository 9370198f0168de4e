#include "run/project.h"

#include <exception>
#include <new>
#include <string>

#include "results/result_document.h"
#include "run/errors.h"
#include "run/process.h"

namespace mnd {

Project::Project() : samples(new Samples), structure(new Structure) {
    ProfileSettings::the_settings = &the_settings;
}

Project::~Project() {
    delete structure;
    delete samples;
}

void Project::clean() {
    dist_mat.reset();
    structure->reset();
    samples->clean();
    haplo_db.reset();
    mantel.reset();
    allele_db.destroy();
    E.result_stream = nullptr;
    const std::string directory(control_directory());
    MY_DeleteFile((directory + "trans_out.txt").c_str());
    MY_DeleteFile((directory + "dum_mnd.mnp").c_str());
}

void Project::build_res_bac_names() {
    settings& s = the_settings;
    my_string base(settings::input_file);
    base.remove_extension();
    my_string name(base.c_str());
    name += ".htm";
    s.result_file_name = name;
    my_string backup(base.c_str());
    backup += ".bac";
    s.backup_file_name = backup;
    name.extract_path();
    s.project_directory = name;
}

void Project::print_error_message() {
    std::ofstream status(std::string(control_directory()) + "mnd_pro.txt", std::ios::trunc);
    status << "error\n";
}

const char* reason_of_exception() {
    try {
        throw;
    } catch (const ExceptionType&) {
        return "the memory is exhausted";
    } catch (const std::bad_alloc&) {
        return "the memory is exhausted";
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (...) {
        return "an unknown fault";
    }
}

}  // namespace mnd
