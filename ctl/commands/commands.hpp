// The commands, one function each. They throw failure_with_status, and output_closed.
#pragma once

namespace vantu::orvanta::ctl {

struct request;
class output;

void list_devices(const request& asked, output& out);
void show_device(const request& asked, output& out);
void get_values(const request& asked, output& out);
void set_values(const request& asked, output& out);
void save_configuration(const request& asked, output& out);
void back_up(const request& asked, output& out);
void restore(const request& asked, output& out);
void show_differences(const request& asked, output& out);
void wait_for_event(const request& asked, output& out);
void watch_device(const request& asked, output& out);
void replay_capture(const request& asked, output& out);
void diagnose(const request& asked, output& out);
void show_version(const request& asked, output& out);
void print_candidates(const request& asked, output& out);

} // namespace vantu::orvanta::ctl
