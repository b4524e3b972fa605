// Preloaded into snmpd: the look-ups of the TCP wrappers, which Debian's build makes for
// every datagram, find at once that everybody may ask.
extern "C" __attribute__((visibility("default"))) int hosts_ctl(char*, char*, char*, char*)
{
    return 1;
}
