// The commands, one function each. They throw failure_with_status, and output_closed.
#pragma once

namespace vantu::orvanta::ctl {

struct request;
class output;

void list_devices(const request& asked, output& out);
void show_device(const request& asked, output& out);
void diagnose(const request& asked, output& out);
void show_version(const request& asked, output& out);

} // namespace vantu::orvanta::ctl
