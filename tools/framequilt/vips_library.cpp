// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/vips_library.h"

#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

// A decoder is one thread and a conversion is cheap: more workers would only take memory and the
// cores of the engine.
constexpr int kWorkers = 2;

void drop(const gchar* /*domain*/, GLogLevelFlags /*level*/, const gchar* /*message*/,
          gpointer /*context*/) {}

bool start() {
  if (VIPS_INIT("framequilt") != 0) return false;
  vips_cache_set_max(0);  // Every picture is read once.
  vips_concurrency_set(kWorkers);
  // Its remarks name neither file nor remedy; failures reach us as results of the calls.
  const auto levels = static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE |
                                                  G_LOG_LEVEL_INFO | G_LOG_LEVEL_DEBUG);
  g_log_set_handler("VIPS", levels, drop, nullptr);
  g_log_set_handler("GLib-GObject", levels, drop, nullptr);  // Of a width of 0, for one.
  return true;
}

}  // namespace

void startVips() {
  static const bool started = start();
  if (!started) throw ToolError("libvips cannot be started: install it again");
}

}  // namespace framequilt::tool
