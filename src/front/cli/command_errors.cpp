#include "front/cli/command_errors.hpp"

#include <new>

#include "front/cli/command_options.hpp"
#include "recon/recon_error.hpp"

Failure failure_of(const std::exception_ptr& error, const std::string& input)
{
    const std::string program = "homodyne-recon: ";
    const std::string about_input = input.empty() ? "" : input + ": ";
    try {
        std::rethrow_exception(error);
    } catch (const ReconError& e) {
        if (e.id == "homodyne:usage" || e.id == "homodyne:badOption") {
            return {program + in_command_words(e.what()), EXIT_USAGE};
        }
        if (e.id == "homodyne:badFile") {
            return {program + e.what(), EXIT_DATA_FAULT};
        }
        return {program + about_input + e.what(), EXIT_DATA_FAULT};
    } catch (const std::bad_alloc&) {
        return {program + about_input + "not enough memory to reconstruct the file", EXIT_DATA_FAULT};
    } catch (const std::exception& e) {
        return {program + about_input + "internal fault: " + e.what(), EXIT_DATA_FAULT};
    } catch (...) {
        return {program + about_input + "internal fault", EXIT_DATA_FAULT};
    }
}
