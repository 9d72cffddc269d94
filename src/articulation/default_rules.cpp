#include "articulation/default_rules.h"

namespace tessarin {

const std::string_view kDefaultRules = "version 1.6\n"
                                       "framerate 30\n"
                                       "x\t\t\t .5 50 50\n"
                                       "nNGDHdgth\t .4 50 50\n"
                                       "CHjzTHZHksSH .5  50 50 0 .5 0 1.0\n"
                                       "r\t\t\t  .8 50 50\n"
                                       "AEAHAOEY\t  .7 50 50\n"
                                       "y\t\t\t .7 75 75\n"
                                       "EREHIY\t\t .7 50 50\n"
                                       "IHAY\t\t .6  50 50\n"
                                       "lwAW\t\t .9  125 125\n"
                                       "AAOW\t\t.9 250 100\n"
                                       "UWOYUH\t\t.9 250 100\n"
                                       "bp\t\t   1.0 50 50 0 1.0 10 .50\n"
                                       "vfm\t\t   1.0 50 50\n"
                                       "closed bpvmf\n";

} // namespace tessarin
