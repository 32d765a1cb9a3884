// homodyne-recon: partial-Fourier reconstruction of ISMRMRD raw-data files
// from the command line (see --help).

#include <exception>
#include <iostream>

#include "front/cli/command_errors.hpp"
#include "front/cli/command_options.hpp"
#include "front/cli/command_run.hpp"

int main(int argc, char** argv)
{
    std::string input;
    try {
        const CommandOptions options = parse_command_line(argc, argv);
        if (options.help) {
            std::cout << command_help();
            return EXIT_DONE;
        }
        input = options.input;
        run_command(options);
        return EXIT_DONE;
    } catch (...) {
        const Failure failure = failure_of(std::current_exception(), input);
        std::cerr << failure.line << "\n";
        return failure.status;
    }
}
