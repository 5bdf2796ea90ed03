#: title writes a report on a dataset: an instrument test, or the list of its dead traces
#: needs report ad-test|crossfeed-test|dc-offset-test|distortion-test|dynamic-range-test|gain-accuracy-test|gain-step-test|impulse-test|kills-report|noise-test which one
#: needs input FILE the dataset
#: needs output FILE the text to write
#: takes values none|FILE none what a test measured, one line of comma-separated values for every trace
#: takes file preset|NUMBER preset the field file of the record; preset, here and below: what the test's dialog begins with
#: takes second-file preset|NUMBER preset of tests that compare two records: the field file of the second
#: takes first-trace NUMBER 1 the first trace to test
#: takes last-trace all|NUMBER all the last one
#: takes limit preset|DECIMAL preset what fails a trace, in the dialog's unit
#: takes signal preset|DECIMAL preset of the gain accuracy test: the input signal, RMS, in mV
#: takes start-voltage preset|DECIMAL preset of the A/D test: the voltage of the first record
#: takes next-pairs preset|halving|doubling preset of the A/D test: the voltages of the records behind it
#: takes method correlation|transform|cleared-transform correlation of the distortion test; cleared-transform: its buffer is cleared for every trace
#: takes harmonics preset|NUMBER preset of the distortion test: how many harmonics are shown
#: takes first-signal preset|NUMBER preset of the crossfeed test: the first driven trace
#: takes increment preset|NUMBER preset of the crossfeed test: from one driven trace to the next
include parts/all.qs
include parts/overwrite.qs

patience 0
expect file ${input} exists else "there is no file \"${input}\""
when overwrite=no
  expect file ${output} absent else "\"${output}\" exists; give overwrite=yes to replace it"
  when values=none
  else
    expect file ${values} absent else "\"${values}\" exists; give overwrite=yes to replace it"
  end
end
patience 2
press main.file-dump
wait window file-dump 60
answer-file ${input}
press file-dump.open-file
when report=kills-report
  select file-dump.reports "Trace Kills Report"
end
when report=ad-test
  select file-dump.reports "A/D Converter Test"
end
when report=crossfeed-test
  select file-dump.reports "Crossfeed Test"
end
when report=distortion-test
  select file-dump.reports "THD Test"
end
when report=noise-test
  select file-dump.reports "EIN Test"
end
when report=dc-offset-test
  select file-dump.reports "DC Offset Test"
end
when report=dynamic-range-test
  select file-dump.reports "Dynamic Range Test"
end
when report=impulse-test
  select file-dump.reports "Impulse Resp. Test"
end
when report=gain-accuracy-test
  select file-dump.reports "Gain Accuracy Test"
end
when report=gain-step-test
  select file-dump.reports "Gain Step Test"
end
press file-dump.start-report
wait window ${report} 60
when report=ad-test|kills-report
else
  type ${report}.first-trace ${first-trace}
  when last-trace=all
    type ${report}.last-trace 1000000000
  else
    type ${report}.last-trace ${last-trace}
  end
end
when file=preset
else
  type ${report}.field-file ${file}
end
when second-file=preset
else
  type ${report}.second-file ${second-file}
end
when limit=preset
else
  type ${report}.limit ${limit}
end
when signal=preset
else
  type ${report}.signal ${signal}
end
when start-voltage=preset
else
  type ${report}.start-voltage ${start-voltage}
end
when next-pairs=halving
  press ${report}.halving
end
when next-pairs=doubling
  press ${report}.doubling
end
when method=transform|cleared-transform
  press ${report}.use-fft
end
when method=cleared-transform
  press ${report}.clear-buffer
end
when harmonics=preset
else
  type ${report}.harmonics ${harmonics}
end
when first-signal=preset
else
  type ${report}.first-signal ${first-signal}
end
when increment=preset
else
  type ${report}.increment ${increment}
end
press ${report}.run
wait text ${report}.status "[!R]*" 8640000
expect like ${report}.status "[0-9]*"
print ${report}.status
when values=none
else
  answer-file ${values}
  press ${report}.save
end
answer-file ${output}
press file-dump.save
include parts/checks.qs
quit
