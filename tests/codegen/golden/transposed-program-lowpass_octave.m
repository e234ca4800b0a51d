fs = 8000;
load -force "lowpass_impresponse.dat";
y = lowpass_impresponse;
x = [0:size(y,1)-1]/fs;
x = x.';
z = abs(fft(y,4096));
z = z(1:size(z,1)/2);
step = size(z,1)-1;
w=[0:fs/2/step:fs/2];
gset multiplot
gset nokey;
subplot(2,1,1), plot(x,y);
xlabel("Time (Seconds)");
ylabel("Impulse Response (lowpass)");
grid;
subplot(2,1,2), plot(w,20*log10(z));
xlabel("Frequency(Hz)");
ylabel("dB");
