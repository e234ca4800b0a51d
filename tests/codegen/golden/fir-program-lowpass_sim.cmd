lp lowpass_sim.hex
rp
e
q
