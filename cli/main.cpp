// cif: the plug-in without a host.
#include "cli/Files.h"
#include "cli/Options.h"

#include <exception>
#include <new>

namespace {

using namespace cli;

template <class... Cases>
struct Match : Cases... {
    using Cases::operator()...;
};

Outcome<> run(const Invocation& invocation)
{
    return std::visit(Match{
                          [](const Information& i) { return printResult(i.text); },
                          [](const ListOptions& o) { return list(o); },
                          [](const DescribeOptions& o) { return describe(o); },
                          [](const ApplyOptions& o) { return apply(o); },
                          [](const GenerateOptions& o) { return generate(o); },
                          [](const EditOptions& o) { return edit(o); },
                      },
                      invocation.command);
}

int report(const Failure& failure)
{
    printError(failure.text);
    return failure.status;
}

} // namespace

int main(int argc, char** argv)
{
    cli::watchInterrupts();
    try {
        const Outcome<Invocation> invocation = parseCommandLine(argc, argv);
        if (!invocation)
            return report(invocation.error());
        startReporting(invocation->loudness);
        const Outcome<> done = run(*invocation);
        return done ? kDone : report(done.error());
    } catch (const std::bad_alloc&) {
        return report({kNoPicture, "memory is short"});
    } catch (const std::exception& e) {
        return report({kNoPicture, e.what()});
    }
}
