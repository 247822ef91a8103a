#include "platform/linux/network/GioTcpListener.h"

#include "async/Scope.h"
#include "platform/linux/glib/GlibEventLoop.h"

#include <gtest/gtest.h>

namespace ondrel::platform {

namespace {

enum class Accepted { nothing, none, one };

async::Task<void> accept(TcpListener* listener, Accepted* result) {
  const auto connection = co_await listener->accept();
  *result = connection ? Accepted::one : Accepted::none;
}

// What goes over its connections is tested with the server that stands on it, in tests/mcp.
TEST(GioTcpListenerTest, EndsTheWaitForAConnectionWhenItIsClosed) {
  const glib::GlibEventLoop loop;
  for (const int turnsBefore : {0, 1, 5}) {
    network::GioTcpListener listener;
    ASSERT_TRUE(listener.listen(0)); // any port
    Accepted result = Accepted::nothing;
    async::Scope scope;
    scope.spawn(accept(&listener, &result));
    for (int i = 0; i < turnsBefore; ++i)
      g_main_context_iteration(nullptr, FALSE);
    EXPECT_EQ(result, Accepted::nothing);
    listener.close();
    listener.close();
    for (int i = 0; i < 10; ++i)
      g_main_context_iteration(nullptr, FALSE);
    EXPECT_EQ(result, Accepted::none) << turnsBefore;
  }
}

} // namespace

} // namespace ondrel::platform
