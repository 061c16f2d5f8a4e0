// The plug-in does not mind how the stack is aligned that it is called with.
#include "tests/support/every_call.h"
#include "tests/support/pictures.h"

#include <string>
#include <vector>

namespace
{

/// Sources that lead to both ends of every test for a colour.
std::vector<reference::Picture> sources()
{
    Random random{7};
    return {randomPicture(random, 45, 6), reference::Picture(45, 6, {255, 255, 255}),
            reference::Picture(45, 6, {0, 0, 0})};
}

class Stack : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(Stack);

TEST_P(Stack, MayBeAlignedToWordsOnly)
{
    forEachHostAndLoop(artefact(), [](TestHost& host) {
        for (const reference::Picture& source : sources())
        {
            const auto wanted = outcomesOfEveryCall(host, source);
            for (const int skew : {4, 8, 12})
            {
                SCOPED_TRACE("stack skewed by " + std::to_string(skew));
                HostSetup setup = host.setup();
                setup.options.stackSkew = skew;
                TestHost skewed{setup};
                ASSERT_EQ(outcomesOfEveryCall(skewed, source), wanted);
            }
        }
    });
}

} // namespace
