#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "module/module_test.h"
#include "resources/resource_ids.h"
#include "support/dialog_driver.h"

namespace test_support {

/// A module with its panel, on a thread that runs a message loop; the test is the panel's user.
class PanelTest : public ModuleTest {
  protected:
    ~PanelTest() override;

    /// With a controller on the line. The worker's polls stay away unless the settings say else.
    void OpenPanel(const std::string& settings = "CmdPoll=1000000\n");
    /// The thread ends, as that of a host's window does; and a new one starts the module again.
    void EndPanelThread();
    void StartOnPanelThread();
    /// What the panel asks for when the button is pressed, its line ends included.
    std::vector<std::string> RequestsOf(int button);

    DialogDriver& Panel() { return *panel_; }
    SimulatedController& Line() { return *line_; }

  private:
    std::atomic<bool> stop_{false};
    Thread owner_;
    std::unique_ptr<DialogDriver> panel_;
    SimulatedController* line_ = nullptr;
};

}  // namespace test_support
